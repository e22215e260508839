#include "unit/Editor/Shapes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace Shapes {

namespace {

double squaredDistanceToSegment(Point p, Point a, Point b)
{
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double squared = dx * dx + dy * dy;
    const double along =
        squared > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / squared, 0.0, 1.0) : 0;
    const double x = p.x - a.x - along * dx;
    const double y = p.y - a.y - along * dy;
    return x * x + y * y;
}

double distanceToSegment(Point p, Point a, Point b)
{
    return std::sqrt(squaredDistanceToSegment(p, a, b));
}

} // namespace

Distance capsule(Point from, Point to, double width)
{
    return [=](Point p) { return distanceToSegment(p, from, to) - width / 2; };
}

Distance chain(const QList<Point>& points, double width)
{
    return [=](Point p) {
        double least = 1e18; // squared: this is called often
        for (qsizetype i = 0; i + 1 < points.size(); ++i)
            least = std::min(least, squaredDistanceToSegment(p, points[i], points[i + 1]));
        return std::sqrt(least) - width / 2;
    };
}

Distance triangle(Point a, Point b, Point c)
{
    return [=](Point p) {
        const auto side = [p](Point from, Point to) {
            return (to.x - from.x) * (p.y - from.y) - (to.y - from.y) * (p.x - from.x);
        };
        const double sides[] = {side(a, b), side(b, c), side(c, a)};
        const bool isInside = std::ranges::all_of(sides, [](double s) { return s >= 0; }) ||
                              std::ranges::all_of(sides, [](double s) { return s <= 0; });
        const double edge = std::min(
            {distanceToSegment(p, a, b), distanceToSegment(p, b, c), distanceToSegment(p, c, a)});
        return isInside ? -edge : edge;
    };
}

Distance disc(Point centre, double radius)
{
    return [=](Point p) { return Geometry::distance(p, centre) - radius; };
}

Distance roundedOutline(const Geometry::Rect& rect, double radius, double width)
{
    return [=](Point p) {
        const double dx = std::abs(p.x - rect.x - rect.width / 2) - rect.width / 2 + radius;
        const double dy = std::abs(p.y - rect.y - rect.height / 2) - rect.height / 2 + radius;
        const double outside = std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) +
                               std::min(std::max(dx, dy), 0.0) - radius;
        return std::abs(outside) - width / 2;
    };
}

Distance ellipseOutline(const Geometry::Rect& rect, double width)
{
    QList<Point> points;
    constexpr int count = 120;
    for (int i = 0; i <= count; ++i) {
        const double angle = 2 * std::numbers::pi * i / count;
        points.append({rect.x + rect.width / 2 * (1 + std::cos(angle)),
                       rect.y + rect.height / 2 * (1 + std::sin(angle))});
    }
    return chain(points, width);
}

Distance united(Distance a, Distance b)
{
    return [a = std::move(a), b = std::move(b)](Point p) { return std::min(a(p), b(p)); };
}

} // namespace Shapes

namespace {

/// How much of a pixel a shape covers, from 0 to 1. `corner` is the pixel's bottom left one.
double coverage(const Shapes::Distance& shape, Geometry::Point corner, double side)
{
    const double middle = shape({corner.x + side / 2, corner.y + side / 2});
    if (std::abs(middle) > side)
        return middle < 0 ? 1 : 0;
    constexpr int samples = 8;
    int inside = 0;
    for (int i = 0; i < samples * samples; ++i) {
        const double x = corner.x + (i % samples + 0.5) / samples * side;
        const double y = corner.y + (i / samples + 0.5) / samples * side;
        inside += shape({x, y}) < 0 ? 1 : 0;
    }
    return static_cast<double>(inside) / (samples * samples);
}

} // namespace

BaseImage plainPicture(Geometry::Size points, double density, const QColor& color)
{
    QImage pixels(static_cast<int>(std::lround(points.width * density)),
                  static_cast<int>(std::lround(points.height * density)), QImage::Format_RGB32);
    pixels.fill(color);
    return BaseImage::ofDensity(pixels, density);
}

void expectShape(const QImage& image, double density, const Shapes::Distance& shape,
                 const QColor& color)
{
    // The channel in which the two colours differ most says how much of a pixel is covered.
    const auto channels = [](const QColor& c) { return std::array{c.red(), c.green(), c.blue()}; };
    const std::array ground = channels(testGround);
    const std::array mark = channels(color);
    constexpr double edgeTolerance = 0.13; // of a pixel
    constexpr int looseEdges = 8; // pixels where a join or a tip is drawn a bit differently
    double wantedArea = 0;
    double area = 0;
    int wrong = 0;
    int loose = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const Geometry::Point corner{x / density, (image.height() - 1 - y) / density};
            const double share = coverage(shape, corner, 1 / density);
            const bool isNearEdge =
                std::abs(shape({corner.x + 0.5 / density, corner.y + 0.5 / density})) < 1 / density;
            const std::array seen = channels(image.pixelColor(x, y));
            double seenShare = 0;
            double largest = 0;
            bool isRight = true;
            for (std::size_t c = 0; c < seen.size(); ++c) {
                const double range = mark[c] - ground[c];
                const double tolerance = isNearEdge ? std::abs(range) * edgeTolerance + 2 : 1;
                isRight = isRight && std::abs(seen[c] - (ground[c] + share * range)) <= tolerance;
                if (std::abs(range) > largest) {
                    largest = std::abs(range);
                    seenShare = (seen[c] - ground[c]) / range;
                }
            }
            wantedArea += share;
            area += seenShare;
            if (!isRight && isNearEdge && ++loose <= looseEdges)
                continue;
            if (!isRight && ++wrong <= 5) {
                ADD_FAILURE() << "pixel " << x << ", " << y << " is "
                              << image.pixelColor(x, y).name().toStdString() << " where " << share
                              << " of it is covered";
            }
        }
    }
    EXPECT_EQ(wrong, 0) << "wrong pixels";
    EXPECT_GT(wantedArea, 0);
    EXPECT_NEAR(area, wantedArea, std::max(0.02 * wantedArea, 1.5));
}

QColor colorAt(const QImage& image, double density, Geometry::Point point)
{
    return image.pixelColor(static_cast<int>(std::floor(point.x * density)),
                            image.height() - 1 - static_cast<int>(std::floor(point.y * density)));
}

Annotation markOf(AnnotationKind kind, Geometry::Point start, Geometry::Point end, double lineWidth,
                  const char* color)
{
    return {.kind = kind,
            .start = start,
            .end = end,
            .colorHex = QString::fromLatin1(color),
            .lineWidth = lineWidth};
}

Annotation strokeOf(AnnotationKind kind, QList<Geometry::Point> path, double lineWidth,
                    const char* color)
{
    Annotation stroke = markOf(kind, {}, {}, lineWidth, color);
    stroke.path = std::move(path);
    return stroke;
}
