#pragma once

#include "Support/Geometry.h"

/// How large an editor's window opens. All in points.
namespace EditorLayout {

inline constexpr double toolbarHeight = 46;
/// With a title bar, whose height is up to the desktop.
inline constexpr Geometry::Size smallestWindow = {940, 360};
inline constexpr double titleBarHeight = 28;

/// The magnification at which a picture is first shown: never enlarged.
double initialMagnification(Geometry::Size picture, Geometry::Size visible);

/// The window's content then.
Geometry::Size contentSize(Geometry::Size picture, double magnification);

} // namespace EditorLayout
