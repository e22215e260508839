#include "Editor/AnnotationRenderer.h"
#include "Editor/AnnotationShapes.h"
#include "Editor/AnnotationText.h"

#include <algorithm>
#include <cmath>
#include <span>

using AnnotationShapes::counterRadius;
using AnnotationShapes::labelSize;
using AnnotationShapes::lineWidth;
using Geometry::Point;
using Geometry::Rect;

namespace {

constexpr double textMargin = 6;
constexpr double counterMargin = 4;

/// The smallest rectangle that holds all points, of which there is one at least.
Rect hull(std::span<const Point> points)
{
    Point least = points.front();
    Point most = least;
    for (const Point& point : points) {
        least = {std::min(least.x, point.x), std::min(least.y, point.y)};
        most = {std::max(most.x, point.x), std::max(most.y, point.y)};
    }
    return Rect::spanning(least, most);
}

/// Points farther out than this may be drawn elsewhere.
constexpr double faithful = 20'000;
constexpr Rect anywhere{-1e9, -1e9, 2e9, 2e9};

bool isFaithful(const Rect& rect)
{
    // False for what is no number too.
    return rect.minX() > -faithful && rect.minY() > -faithful && rect.maxX() < faithful &&
           rect.maxY() < faithful;
}

Rect united(const Rect& a, const Rect& b)
{
    return hull(std::array{Point{std::min(a.minX(), b.minX()), std::min(a.minY(), b.minY())},
                           Point{std::max(a.maxX(), b.maxX()), std::max(a.maxY(), b.maxY())}});
}

Rect paintedText(Point origin, const QString& text, double size)
{
    const Rect reach = AnnotationText::reach(text, size);
    return reach.translated(origin.x, origin.y);
}

Rect paintedCounter(const Annotation& annotation)
{
    const double radius = counterRadius(lineWidth(annotation));
    const QString number = AnnotationShapes::counterText(annotation);
    const double size = AnnotationShapes::counterTextSize(radius);
    const Geometry::Size box = AnnotationText::measure(number, size);
    const Point centre = annotation.start;
    return united(Rect{centre.x, centre.y, 0, 0}.grown(radius),
                  paintedText({centre.x - box.width / 2, centre.y - box.height / 2}, number, size));
}

Rect painted(const Annotation& annotation)
{
    const double half = lineWidth(annotation) / 2;
    switch (annotation.kind) {
    case AnnotationKind::arrow: {
        const AnnotationShapes::Arrow arrow = AnnotationShapes::arrow(annotation);
        return united(hull(std::array{arrow.tail, arrow.shaftEnd}).grown(half), hull(arrow.head));
    }
    case AnnotationKind::line:
    case AnnotationKind::rect:
    case AnnotationKind::ellipse:
        return annotation.rect().grown(half);
    case AnnotationKind::redact:
        return annotation.rect();
    case AnnotationKind::freehand:
    case AnnotationKind::highlight:
        if (!annotation.path || annotation.path->isEmpty())
            return {};
        return hull(*annotation.path)
            .grown(annotation.kind == AnnotationKind::highlight
                       ? half * AnnotationShapes::highlightWidth
                       : half);
    case AnnotationKind::text:
        return paintedText(annotation.start, annotation.text.value_or(QString()),
                           labelSize(annotation));
    case AnnotationKind::counter:
        return paintedCounter(annotation);
    }
    Q_UNREACHABLE();
}

} // namespace

namespace AnnotationRenderer {

Geometry::Rect bounds(const Annotation& annotation)
{
    const double margin = std::max(annotation.lineWidth, 8.0);
    switch (annotation.kind) {
    case AnnotationKind::arrow:
    case AnnotationKind::line:
    case AnnotationKind::rect:
    case AnnotationKind::ellipse:
    case AnnotationKind::redact:
        return annotation.rect().grown(margin);
    case AnnotationKind::freehand:
    case AnnotationKind::highlight:
        if (!annotation.path || annotation.path->isEmpty())
            return {};
        return hull(*annotation.path).grown(2 * margin);
    case AnnotationKind::text: {
        const Geometry::Size size =
            AnnotationText::measure(annotation.text.value_or(QString()), labelSize(annotation));
        return Geometry::Rect{annotation.start.x, annotation.start.y, size.width, size.height}
            .grown(textMargin);
    }
    case AnnotationKind::counter:
        return Geometry::Rect{annotation.start.x, annotation.start.y, 0, 0}.grown(
            counterRadius(annotation.lineWidth) + counterMargin);
    }
    Q_UNREACHABLE();
}

Rect painted(const Annotation& annotation)
{
    const Rect area = ::painted(annotation);
    return isFaithful(area) ? area : anywhere;
}

Rect paintedStrokeEnd(const Annotation& annotation)
{
    const QList<Point>& path = *annotation.path;
    Annotation end = annotation;
    end.path = path.mid(std::max<qsizetype>(path.size() - 2, 0));
    return painted(end);
}

} // namespace AnnotationRenderer
