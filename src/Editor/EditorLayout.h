#pragma once

#include "Support/Geometry.h"

/// How large an editor's window opens. All in points.
namespace EditorLayout {

inline constexpr double toolbarHeight = 46;
inline constexpr Geometry::Size smallestWindow = {940, 360};

/// The magnification at which a picture is first shown: never enlarged.
double initialMagnification(Geometry::Size picture, Geometry::Size visible);

/// The window's content then.
Geometry::Size contentSize(Geometry::Size picture, double magnification);

} // namespace EditorLayout
