#pragma once

#include "Support/Geometry.h"

/// How large an editor's window opens, and where. All in points.
namespace EditorLayout {

inline constexpr double toolbarHeight = 46;
/// With a title bar, whose height is up to the desktop.
inline constexpr Geometry::Size smallestWindow = {940, 360};
inline constexpr double titleBarHeight = 28;

/// The magnification at which a picture is first shown: never enlarged.
double initialMagnification(Geometry::Size picture, Geometry::Size visible);

/// The window's content then.
Geometry::Size contentSize(Geometry::Size picture, double magnification);

/// Where a window's content lies: in the middle, no larger than there is room for, its title bar
/// on the screen too.
Geometry::Rect placed(Geometry::Size content, Geometry::Rect visible);

/// How small the content of a window may become that is to be no smaller than `window`, title bar
/// included, where there is room for that.
Geometry::Size smallestContent(Geometry::Size window, Geometry::Size visible);

} // namespace EditorLayout
