#pragma once

#include <algorithm>
#include <cmath>

/// Points, sizes and rectangles in points (logical pixels), without Qt.
///
/// Two kinds of space exist, and their types differ so that neither passes for the other:
///  - `Point` and `Rect`: y grows upwards. Global ones have their origin at the bottom left of the
///    primary screen; those of a view at the bottom left of that view.
///  - `TopLeftPoint` and `TopLeftRect`: y grows downwards. So speak Qt, X11 and the capture tool.
/// `Flip` is the only bridge between them.
namespace Geometry {

struct Point {
    double x = 0;
    double y = 0;

    friend bool operator==(const Point&, const Point&) = default;
};

/// The Euclidean distance between two points, in points.
inline double distance(Point a, Point b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

struct Size {
    double width = 0;
    double height = 0;

    friend bool operator==(const Size&, const Size&) = default;
};

/// A rectangle with y up: (x, y) is its bottom left corner. Width and height are never negative.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    friend bool operator==(const Rect&, const Rect&) = default;

    constexpr double minX() const { return x; }
    constexpr double minY() const { return y; }
    constexpr double maxX() const { return x + width; }
    constexpr double maxY() const { return y + height; }
    constexpr Point origin() const { return {x, y}; }
    constexpr Size size() const { return {width, height}; }
    constexpr bool isEmpty() const { return width <= 0 || height <= 0; }

    /// The rectangle that two opposite corners span, whichever way round they are given.
    static Rect spanning(Point a, Point b)
    {
        return {std::min(a.x, b.x), std::min(a.y, b.y), std::abs(a.x - b.x), std::abs(a.y - b.y)};
    }

    constexpr Rect translated(double dx, double dy) const
    {
        return {x + dx, y + dy, width, height};
    }

    /// Grown by `distance` on every side.
    constexpr Rect grown(double distance) const
    {
        return {x - distance, y - distance, width + 2 * distance, height + 2 * distance};
    }

    /// Whether `p` lies inside; the left and bottom edges belong to the rectangle, the others not.
    constexpr bool contains(Point p) const
    {
        return p.x >= minX() && p.x < maxX() && p.y >= minY() && p.y < maxY();
    }

    /// Whether a mouse pointer at `p` lies inside. The pointer stands on the pixel below and to the
    /// right of its position, so the left and top edges belong to the rectangle, the others not.
    constexpr bool containsPointer(Point p) const
    {
        return p.x >= minX() && p.x < maxX() && p.y > minY() && p.y <= maxY();
    }
};

struct TopLeftPoint {
    double x = 0;
    double y = 0;

    friend bool operator==(const TopLeftPoint&, const TopLeftPoint&) = default;
};

/// A rectangle with y down: (x, y) is its top left corner. Width and height are never negative.
struct TopLeftRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    friend bool operator==(const TopLeftRect&, const TopLeftRect&) = default;

    constexpr double right() const { return x + width; }
    constexpr double bottom() const { return y + height; }
};

/// Turns y over between a space whose y grows upwards from the bottom left corner of `box`, and the
/// space with y down in which `box` itself is given.
///
/// With the primary screen as Qt reports it the first one is the global space; with a widget's own
/// rectangle it is that widget's view space; with (0, 0, primary width, primary height) the second
/// one is the capture tool's space.
class Flip {
public:
    explicit constexpr Flip(TopLeftRect box)
        : m_left(box.x)
        , m_bottom(box.bottom())
    {
    }

    constexpr Point bottomLeftFromTopLeft(TopLeftPoint p) const
    {
        return {p.x - m_left, m_bottom - p.y};
    }
    constexpr Rect bottomLeftFromTopLeft(TopLeftRect r) const
    {
        return {r.x - m_left, m_bottom - r.bottom(), r.width, r.height};
    }
    constexpr TopLeftPoint topLeftFromBottomLeft(Point p) const
    {
        return {p.x + m_left, m_bottom - p.y};
    }
    constexpr TopLeftRect topLeftFromBottomLeft(Rect r) const
    {
        return {r.x + m_left, m_bottom - r.maxY(), r.width, r.height};
    }

private:
    double m_left;
    double m_bottom;
};

} // namespace Geometry
