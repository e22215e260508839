#pragma once

#include "Support/Geometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The table of screens that the program hands to its capture tool, so that both agree on how
/// points become pixels. Free of Qt: the tool starts without it.
namespace ScreenTable {

/// The environment variable that carries the table from the program to the tool.
inline constexpr const char* variable = "TAMRIK_SCREENS";

/// A rectangle of whole pixels on the X server's root window, y down.
struct PixelRect {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

struct Screen {
    std::string name;
    /// In points, origin at the top left of the primary screen, y down. Qt rounds it to whole
    /// points, so its size times `scale` may miss the pixels' by one.
    Geometry::TopLeftRect frame;
    PixelRect pixels;
    /// Pixels a point.
    double scale = 1;

    friend bool operator==(const Screen&, const Screen&) = default;
};

/// The table as text, one line a screen, the primary screen first. A line is nine numbers and the
/// name, with one space between: frame x, y, width, height; pixel x, y, width, height; scale; name.
/// The numbers read back exactly, in every locale. In the name control characters and '%' are
/// written as '%' and two lower-case hexadecimal digits.
std::string write(const std::vector<Screen>& screens);

/// Reads what `write` made; the last line may lack its line end. Absent when any line is malformed,
/// when a size or scale is not positive and finite, when a pixel lies farther than 2^24 from the
/// origin, or when there is no screen at all.
std::optional<std::vector<Screen>> read(std::string_view text);

/// Where a rectangle lies on the root window, and at what scale.
struct Placement {
    PixelRect pixels;
    /// Of the screen through which the rectangle was mapped.
    double scale = 1;
};

/// Maps a rectangle in points (origin at the top left of the primary screen, y down) to pixels.
///
/// The whole rectangle goes through the screen that holds most of its area (the earlier one in the
/// table when two hold as much). Each edge is rounded by itself, halves away from zero: pixel edge
/// = screen's pixel edge + (edge - screen's edge) * scale. An edge on the screen's own far edge
/// goes to the screen's own far pixel edge, so that a whole screen is a whole screen at every
/// scale. What lies off all screens is cut away: the result is the smallest rectangle around what
/// is left.
///
/// A screen that `read` would refuse counts for nothing. Absent when nothing is left: the rectangle
/// lies wholly off the screens, is empty, has a value that is not finite, or is thinner than a
/// pixel.
std::optional<Placement> place(Geometry::TopLeftRect points, const std::vector<Screen>& screens);

/// A rectangle that was measured in points on one screen, and perhaps runs off it, as one that
/// `place` maps to the same pixels. `measuredOn` is one of `screens`.
///
/// It is `points` itself whenever `place` maps that through the same screen. Otherwise, where
/// frames leave holes between the screens, its edges are the nearest whole points of the screen
/// that holds most of the pixels and through which `place` maps it then. Between screens of
/// different scales there may be none, for a rectangle that covers about half of both; it stays as
/// it is.
Geometry::TopLeftRect placeable(Geometry::TopLeftRect points, const Screen& measuredOn,
                                const std::vector<Screen>& screens);

} // namespace ScreenTable
