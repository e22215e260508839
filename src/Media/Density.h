#pragma once

#include <optional>

/// How many pixels of a picture make a point.
namespace Density {

inline constexpr double pointsPerInch = 72;

/// What a file's own resolution means, in pixels a point: 72 dots an inch are one. Files store
/// rounded numbers, so what lies within half a percent of a multiple of an eighth is that multiple.
/// One when the file says nothing, or nothing that can be meant.
double pixelsPerPoint(std::optional<double> dotsPerInch);

} // namespace Density
