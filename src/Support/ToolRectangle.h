#pragma once

#include "Support/Geometry.h"

#include <QString>

namespace ToolRectangle {

/// A rectangle for the capture tool's -R option: "x,y,width,height" in whole points, halves rounded
/// to even, origin at the top left of the primary screen.
///
/// `rect` is in global points (y up); `primaryFrame` is the primary screen's frame in the same
/// space.
QString text(Geometry::Rect rect, Geometry::Rect primaryFrame);

} // namespace ToolRectangle
