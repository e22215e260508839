#pragma once

#include "ChipPosition.h"
#include "Support/Geometry.h"

#include <vector>

/// Where chips stand and how large they are. In points, y up; `visible` is a screen's visible
/// frame.
namespace ChipPlacement {

/// Between the stack and the edges of the visible frame.
inline constexpr double margin = 24;
/// Between two neighbouring chips.
inline constexpr double spacing = 12;

/// Where the user wants the stack. The origin counts for the custom position only: it is that of
/// the newest chip, in global points.
struct Anchor {
    ChipPosition position = ChipPosition::bottomLeft;
    Geometry::Point customOrigin;
};

/// The size of the chip of a picture: the picture within 220 x 150, never enlarged, and then at
/// least 100 x 48, which does not keep its proportions.
Geometry::Size chipSize(Geometry::Size picture);

/// The origin of a chip that is the newest.
Geometry::Point firstSlotOrigin(const Anchor& anchor, Geometry::Size chip, Geometry::Rect visible);

/// The origins of all chips, given and returned oldest first. The newest stands in the first slot,
/// older ones farther and farther from the edge; a long stack runs past the visible frame.
std::vector<Geometry::Point> origins(const Anchor& anchor,
                                     const std::vector<Geometry::Size>& oldestFirst,
                                     Geometry::Rect visible);

} // namespace ChipPlacement
