#include "Support/ToolRectangle.h"

#include <array>
#include <cstdio>

QString ToolRectangle::text(Geometry::Rect rect, Geometry::Rect primaryFrame)
{
    const Geometry::Flip flip({0, 0, primaryFrame.width, primaryFrame.maxY()});
    const Geometry::TopLeftRect r = flip.topLeftFromBottomLeft(rect);
    // %.0f of the largest double has 309 digits, and there are four. Not QString::asprintf: it
    // rounds halves up.
    std::array<char, 1280> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.0f,%.0f,%.0f,%.0f", r.x, r.y, r.width, r.height);
    return QString::fromLatin1(buffer.data());
}
