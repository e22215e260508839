#include "ChipPlacement.h"

#include <algorithm>
#include <optional>

using Geometry::Point;
using Geometry::Rect;
using Geometry::Size;

namespace {

constexpr Size largestThumbnail = {220, 150};
constexpr Size smallestChip = {100, 48};

enum class Column { left, center, right };
enum class Row { bottom, top };

/// A place along the edges of the screen.
struct Place {
    Column column;
    Row row;
};

/// Absent for the custom position.
std::optional<Place> placeOf(ChipPosition position)
{
    switch (position) {
    case ChipPosition::bottomLeft:
        return Place{Column::left, Row::bottom};
    case ChipPosition::bottomCenter:
        return Place{Column::center, Row::bottom};
    case ChipPosition::bottomRight:
        return Place{Column::right, Row::bottom};
    case ChipPosition::topLeft:
        return Place{Column::left, Row::top};
    case ChipPosition::topCenter:
        return Place{Column::center, Row::top};
    case ChipPosition::topRight:
        return Place{Column::right, Row::top};
    case ChipPosition::custom:
        return std::nullopt;
    }
    return std::nullopt; // no such position
}

double columnX(Column column, double width, Rect visible)
{
    switch (column) {
    case Column::left:
        return visible.minX() + ChipPlacement::margin;
    case Column::center:
        return visible.minX() + visible.width / 2 - width / 2;
    case Column::right:
        return visible.maxX() - ChipPlacement::margin - width;
    }
    return visible.minX(); // no such column
}

/// Within the visible frame; a chip too large for it ends at the upper and right edges.
Point clampedOrigin(Point origin, Size chip, Rect visible)
{
    return {std::min(std::max(visible.minX(), origin.x), visible.maxX() - chip.width),
            std::min(std::max(visible.minY(), origin.y), visible.maxY() - chip.height)};
}

/// The bottom edges of chips that stand on each other, the newest lowest, at `bottom`.
std::vector<double> upwards(const std::vector<Size>& oldestFirst, double bottom)
{
    std::vector<double> ys(oldestFirst.size());
    for (std::size_t i = ys.size(); i-- > 0;) {
        ys[i] = bottom;
        bottom += oldestFirst[i].height + ChipPlacement::spacing;
    }
    return ys;
}

/// The bottom edges of chips that hang from each other, the top of the newest highest, at `top`.
std::vector<double> downwards(const std::vector<Size>& oldestFirst, double top)
{
    std::vector<double> ys(oldestFirst.size());
    for (std::size_t i = ys.size(); i-- > 0;) {
        ys[i] = top - oldestFirst[i].height;
        top = ys[i] - ChipPlacement::spacing;
    }
    return ys;
}

std::vector<Point> customOrigins(Point anchor, const std::vector<Size>& oldestFirst, Rect visible)
{
    const double height = oldestFirst.back().height;
    const bool inUpperHalf = anchor.y >= visible.minY() + visible.height / 2;
    const std::vector<double> ys =
        inUpperHalf ? downwards(oldestFirst, anchor.y + height) : upwards(oldestFirst, anchor.y);
    std::vector<Point> result;
    result.reserve(ys.size());
    for (const double y : ys)
        result.push_back({anchor.x, y});
    return result;
}

} // namespace

Size ChipPlacement::chipSize(Size picture)
{
    const double width = std::max(picture.width, 1.0);
    const double height = std::max(picture.height, 1.0);
    const Size most = largestThumbnail;
    // Multiplied before it is divided: a whole number by a hair more would cost a row of pixels.
    Size size = {width, height};
    if (width > most.width || height > most.height) {
        size = most.width * height <= most.height * width
                   ? Size{most.width, most.width * height / width}
                   : Size{most.height * width / height, most.height};
    }
    return {std::max(size.width, smallestChip.width), std::max(size.height, smallestChip.height)};
}

Point ChipPlacement::firstSlotOrigin(const Anchor& anchor, Size chip, Rect visible)
{
    const auto place = placeOf(anchor.position);
    if (!place)
        return clampedOrigin(anchor.customOrigin, chip, visible);
    const double x = columnX(place->column, chip.width, visible);
    switch (place->row) {
    case Row::bottom:
        return {x, visible.minY() + margin};
    case Row::top:
        return {x, visible.maxY() - margin - chip.height};
    }
    return {}; // no such row
}

std::vector<Point> ChipPlacement::origins(const Anchor& anchor,
                                          const std::vector<Size>& oldestFirst, Rect visible)
{
    if (oldestFirst.empty())
        return {};
    const auto place = placeOf(anchor.position);
    if (!place) {
        return customOrigins(firstSlotOrigin(anchor, oldestFirst.back(), visible), oldestFirst,
                             visible);
    }
    const std::vector<double> ys = place->row == Row::bottom
                                       ? upwards(oldestFirst, visible.minY() + margin)
                                       : downwards(oldestFirst, visible.maxY() - margin);
    std::vector<Point> result;
    result.reserve(ys.size());
    for (std::size_t i = 0; i < ys.size(); ++i)
        result.push_back({columnX(place->column, oldestFirst[i].width, visible), ys[i]});
    return result;
}
