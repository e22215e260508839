#include "desktop/flow/Arrangement.h"

#include <algorithm>
#include <cmath>

namespace {

int roundedAwayFromZero(double value)
{
    return static_cast<int>(value < 0 ? -std::floor(-value + 0.5) : std::floor(value + 0.5));
}

/// The point that a pixel means, along one axis of a screen of `points` points.
int snapped(int pixel, int nearPixel, double scale, int points)
{
    const double position = (pixel - nearPixel) / scale;
    if (position >= points - 1 && position < points)
        return points;
    return roundedAwayFromZero(position);
}

int pixelEdge(int point, int nearPixel, int pixels, double scale, int points)
{
    return point == points ? nearPixel + pixels : roundedAwayFromZero(nearPixel + point * scale);
}

QRect spanning(int x1, int y1, int x2, int y2)
{
    return {std::min(x1, x2), std::min(y1, y2), std::abs(x2 - x1), std::abs(y2 - y1)};
}

} // namespace

QSize ArrangedScreen::size() const
{
    return {static_cast<int>(std::floor(pixels.width() / scale + 0.5)),
            static_cast<int>(std::floor(pixels.height() / scale + 0.5))};
}

Expected Arrangement::selected(const ArrangedScreen& on, QPoint from, QPoint to) const
{
    const auto x = [&on](int pixel) {
        const int points = on.size().width();
        const int point = snapped(pixel, on.pixels.x(), on.scale, points);
        return pixelEdge(point, on.pixels.x(), on.pixels.width(), on.scale, points);
    };
    const auto y = [&on](int pixel) {
        const int points = on.size().height();
        const int point = snapped(pixel, on.pixels.y(), on.scale, points);
        return pixelEdge(point, on.pixels.y(), on.pixels.height(), on.scale, points);
    };
    Expected expected;
    expected.shown = spanning(x(from.x()), y(from.y()), x(to.x()), y(to.y()));
    double largest = 1;
    for (const ArrangedScreen& screen : m_screens) {
        const QRect part = screen.pixels & expected.shown;
        expected.saved |= part;
        if (part.isEmpty())
            continue;
        expected.scales += screen.scale;
        largest = std::max(largest, screen.scale);
    }
    if (expected.scales.size() > 1 && largest > 1)
        expected.tolerance = static_cast<int>(std::ceil(largest / 2));
    return expected;
}
