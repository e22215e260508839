#include "Movie/Core/Damage.h"

#include <algorithm>
#include <cstdint>

using ScreenTable::PixelRect;

namespace Damage {

namespace {

/// What asking for one more part costs, in pixels that could be had for it.
constexpr std::int64_t costOfAsking = 16384;
/// More are not looked at one by one; they become one.
constexpr std::size_t most = 64;

struct Box {
    std::int64_t left;
    std::int64_t top;
    std::int64_t right;
    std::int64_t bottom;

    std::int64_t size() const { return (right - left) * (bottom - top); }

    Box with(const Box& other) const
    {
        return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                std::max(bottom, other.bottom)};
    }

    bool meets(const Box& other) const
    {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

Box cut(const PixelRect& changed, const PixelRect& area)
{
    const std::int64_t x = std::int64_t{changed.x} - area.x;
    const std::int64_t y = std::int64_t{changed.y} - area.y;
    Box box{std::max<std::int64_t>(x, 0), std::max<std::int64_t>(y, 0), x + changed.width,
            y + changed.height};
    if (box.left >= area.width || box.top >= area.height || box.right <= 0 || box.bottom <= 0)
        return {0, 0, 0, 0};
    // To even ones outwards; all of them are positive by now.
    box.left -= box.left % 2;
    box.top -= box.top % 2;
    box.right = std::min<std::int64_t>(box.right + box.right % 2, area.width);
    box.bottom = std::min<std::int64_t>(box.bottom + box.bottom % 2, area.height);
    return box;
}

bool belongTogether(const Box& a, const Box& b)
{
    return a.meets(b) || a.with(b).size() <= a.size() + b.size() + costOfAsking;
}

/// Adds a box; those that go with it become part of it.
void add(std::vector<Box>& boxes, Box box)
{
    for (auto other = boxes.begin(); other != boxes.end();) {
        if (!belongTogether(*other, box)) {
            ++other;
            continue;
        }
        box = other->with(box);
        boxes.erase(other);
        other = boxes.begin(); // it has grown: any of the others may meet it now
    }
    boxes.push_back(box);
}

} // namespace

std::vector<PixelRect> parts(const std::vector<PixelRect>& changed, const PixelRect& area)
{
    std::vector<Box> boxes;
    for (const PixelRect& each : changed) {
        const Box box = cut(each, area);
        if (box.left >= box.right || box.top >= box.bottom)
            continue;
        if (changed.size() > most && !boxes.empty())
            boxes.front() = boxes.front().with(box);
        else
            add(boxes, box);
    }
    std::vector<PixelRect> parts;
    parts.reserve(boxes.size());
    for (const Box& box : boxes) {
        parts.push_back({static_cast<std::int32_t>(box.left), static_cast<std::int32_t>(box.top),
                         static_cast<std::int32_t>(box.right - box.left),
                         static_cast<std::int32_t>(box.bottom - box.top)});
    }
    return parts;
}

} // namespace Damage
