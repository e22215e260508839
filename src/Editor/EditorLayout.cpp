#include "Editor/EditorLayout.h"

#include <algorithm>
#include <cmath>

using Geometry::Rect;
using Geometry::Size;

namespace {

/// How much of the screen a window may take at first.
constexpr double share = 0.85;

Size smallerOf(Size a, Size b)
{
    return {std::min(a.width, b.width), std::min(a.height, b.height)};
}

/// The most that a screen has room for below a title bar, in whole points.
Size room(Size visible)
{
    return {std::floor(visible.width), std::floor(visible.height - EditorLayout::titleBarHeight)};
}

} // namespace

double EditorLayout::initialMagnification(Size picture, Size visible)
{
    const double width =
        std::min(std::max(visible.width * share, smallestWindow.width), visible.width);
    return std::min(
        {width / picture.width, (visible.height * share - toolbarHeight) / picture.height, 1.0});
}

Size EditorLayout::contentSize(Size picture, double magnification)
{
    return {std::max(picture.width * magnification, smallestWindow.width),
            picture.height * magnification + toolbarHeight};
}

Rect EditorLayout::placed(Size content, Rect visible)
{
    const Size size = smallerOf(content, room(visible.size()));
    const double middle = visible.y + (visible.height - size.height) / 2;
    const double highest = visible.maxY() - titleBarHeight - size.height;
    return {visible.x + (visible.width - size.width) / 2, std::min(middle, highest), size.width,
            size.height};
}

Size EditorLayout::smallestContent(Size window, Size visible)
{
    return smallerOf({window.width, window.height - titleBarHeight}, room(visible));
}
