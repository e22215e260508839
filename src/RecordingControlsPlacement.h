#pragma once

#include "Support/Geometry.h"

#include <QString>

#include <optional>
#include <vector>

/// Where the controls of a recording stand, and what they say. In global points, y up.
namespace RecordingControlsPlacement {

struct Screen {
    Geometry::Rect frame;
    /// The frame less panels and docks.
    Geometry::Rect visibleFrame;
};

/// Between the controls and the recorded rectangle. Their shadow does not reach further, or it
/// would be in the film.
inline constexpr double distance = 14;

/// The bottom left corner of controls of that size: below the recorded rectangle, above it when
/// there is no room below, and else in the corner of its screen. `screens` has the primary one
/// first; without any there is no place.
std::optional<Geometry::Point> origin(Geometry::Rect recorded, Geometry::Size controls,
                                      const std::vector<Screen>& screens);

/// So many seconds as minutes and seconds, such as "62:05". They are cut off, not rounded.
QString timeText(double seconds);

} // namespace RecordingControlsPlacement
