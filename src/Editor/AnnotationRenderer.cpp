#include "Editor/AnnotationRenderer.h"

#include "Editor/AnnotationDevice.h"
#include "Editor/AnnotationPixelation.h"
#include "Editor/AnnotationShapes.h"
#include "Editor/AnnotationText.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

using AnnotationShapes::counterRadius;
using AnnotationShapes::farthest;
using AnnotationShapes::highlightWidth;
using AnnotationShapes::labelSize;
using AnnotationShapes::lineWidth;
using AnnotationShapes::Space;

namespace {

constexpr double cornerRadius = 2;
constexpr double highlightOpacity = 0.45;
constexpr double redactionBlock = 9;
constexpr double smallestRedaction = 2; // nothing is drawn up to it

/// Strokes an outline with round caps and joins. One without any length is a dot.
void stroke(QPainter& painter, const QPainterPath& path, const QColor& color, double width)
{
    const QRectF box = path.boundingRect();
    if (box.width() == 0 && box.height() == 0) { // Qt draws nothing
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawEllipse(box.topLeft(), width / 2, width / 2);
        return;
    }
    QPen pen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    const double pixel = 1 / AnnotationDevice::scale(painter);
    if (width > pixel * 1.01) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(pen);
        painter.drawPath(path);
        return;
    }
    // Qt has another way for lines this thin, by which what is seen of them depends on where they
    // are clipped. A width of zero is as thin as can be.
    if (width == 0)
        pen.setWidthF(pixel);
    painter.fillPath(QPainterPathStroker(pen).createStroke(path), color);
}

QPainterPath polyline(const QList<Geometry::Point>& points, const Space& space)
{
    QPainterPath path;
    path.reserve(static_cast<int>(points.size()));
    path.moveTo(space(points.front()));
    for (const Geometry::Point& point : points.mid(1))
        path.lineTo(space(point));
    return path;
}

/// A stroked rectangle with round corners. Qt would make a wide line around a tight corner of so
/// few segments that the corner is seen to be cut off.
void strokeRectangle(QPainter& painter, const QRectF& rect, const QColor& color, double width)
{
    const double radius = std::min({cornerRadius, rect.width() / 2, rect.height() / 2});
    const double half = width / 2;
    const auto grownBy = [&](double distance) {
        QPainterPath path;
        const double corner = std::max(radius + distance, 0.0);
        path.addRoundedRect(rect.adjusted(-distance, -distance, distance, distance), corner,
                            corner);
        return path;
    };
    if (width == 0) { // as thin as can be
        stroke(painter, grownBy(0), color, width);
        return;
    }
    QPainterPath ring = grownBy(half); // filled by the odd-even rule
    if (rect.width() > width && rect.height() > width)
        ring.addPath(grownBy(-half));
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPath(ring);
}

/// A stroked ellipse. Qt's own strokes of curves may be a quarter of a point off.
void strokeEllipse(QPainter& painter, const QRectF& rect, const QColor& color, double width)
{
    QPainterPath path;
    if (rect.width() == 0 || rect.height() == 0) {
        path.moveTo(rect.topLeft());
        path.lineTo(rect.bottomRight());
    } else {
        path.addEllipse(rect);
    }
    if (path.elementCount() <= 2 || width == 0) {
        stroke(painter, path, color, width);
        return;
    }
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCurveThreshold(0.01); // points
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    QPainterPath ring = stroker.createStroke(path);
    ring.setFillRule(Qt::WindingFill);
    painter.drawPath(ring);
}

void drawArrow(QPainter& painter, const Space& space, const Annotation& annotation)
{
    const AnnotationShapes::Arrow arrow = AnnotationShapes::arrow(annotation);
    const QColor color = annotation.color();
    stroke(painter, polyline({arrow.tail, arrow.shaftEnd}, space), color, lineWidth(annotation));
    QList<QPointF> head;
    for (const Geometry::Point corner : arrow.head)
        head.append(space(corner));
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPolygon(head);
}

/// A long stroke as far as the painter's clip lets it be seen: the lines near it, with all that
/// decides how these join.
QPainterPath visiblePolyline(const QPainter& painter, const QList<Geometry::Point>& points,
                             const Space& space, double width)
{
    constexpr qsizetype longStroke = 64; // points
    if (!painter.hasClipping() || points.size() < longStroke || points.front() == points.back())
        return polyline(points, space);
    const double pixel = 1 / AnnotationDevice::scale(painter);
    const double reach = width / 2 + 2 * pixel;
    const QRectF near = painter.clipBoundingRect().adjusted(-reach, -reach, reach, reach);
    QPainterPath path;
    bool isDrawing = false;
    QPointF from = space(points.front());
    for (const Geometry::Point& point : points.mid(1)) {
        const QPointF to = space(point);
        const bool isNear = std::max(from.x(), to.x()) >= near.left() &&
                            std::min(from.x(), to.x()) <= near.right() &&
                            std::max(from.y(), to.y()) >= near.top() &&
                            std::min(from.y(), to.y()) <= near.bottom();
        if (isNear && !isDrawing)
            path.moveTo(from);
        if (isNear)
            path.lineTo(to);
        isDrawing = isNear;
        from = to;
    }
    return path;
}

void drawStroke(QPainter& painter, const Space& space, const Annotation& annotation,
                const QColor& color, double width)
{
    if (!annotation.path || annotation.path->size() < 2)
        return;
    const QPainterPath path = visiblePolyline(painter, *annotation.path, space, width);
    if (path.elementCount() > 0)
        stroke(painter, path, color, width);
}

void drawHighlight(QPainter& painter, const Space& space, const Annotation& annotation)
{
    QColor color = annotation.color();
    color.setAlphaF(static_cast<float>(highlightOpacity));
    painter.setCompositionMode(QPainter::CompositionMode_Multiply);
    drawStroke(painter, space, annotation, color, lineWidth(annotation) * highlightWidth);
}

void drawLabel(QPainter& painter, const Space& space, const Annotation& annotation)
{
    AnnotationText::drawLabel(painter, space.textOrigin(annotation.start),
                              annotation.text.value_or(QString()), labelSize(annotation),
                              annotation.color());
}

void drawCounter(QPainter& painter, const Space& space, const Annotation& annotation)
{
    const double radius = counterRadius(lineWidth(annotation));
    painter.setPen(Qt::NoPen);
    painter.setBrush(annotation.color());
    painter.drawEllipse(space(annotation.start), radius, radius);

    const QString number = AnnotationShapes::counterText(annotation);
    const double size = AnnotationShapes::counterTextSize(radius);
    const Geometry::Size box = AnnotationText::measure(number, size);
    const Geometry::Point origin{annotation.start.x - box.width / 2,
                                 annotation.start.y - box.height / 2};
    AnnotationText::drawOutlines(painter, space.textOrigin(origin), number, size,
                                 QColor(255, 255, 255));
}

/// An annotation's rectangle as far as it is to be drawn.
Geometry::Rect reachableRect(const Annotation& annotation)
{
    const auto reachable = [](Geometry::Point p) {
        return Geometry::Point{std::clamp(p.x, -farthest, farthest),
                               std::clamp(p.y, -farthest, farthest)};
    };
    return Geometry::Rect::spanning(reachable(annotation.start), reachable(annotation.end));
}

void drawRedaction(QPainter& painter, const Space& space, const Geometry::Rect& rect,
                   const BaseImage& base)
{
    if (!(rect.width > smallestRedaction && rect.height > smallestRedaction))
        return;
    const AnnotationPixelation::Blocks blocks =
        AnnotationPixelation::pixelated(base, rect, redactionBlock);
    if (blocks.pixels.isNull())
        return;
    const double scaleX = base.pixelsPerPointX();
    const double scaleY = base.pixelsPerPointY();
    AnnotationPixelation::draw(
        painter,
        space(
            Geometry::Rect{blocks.offset.x() / scaleX,
                           base.size.height - (blocks.offset.y() + blocks.pixels.height()) / scaleY,
                           blocks.pixels.width() / scaleX, blocks.pixels.height() / scaleY}),
        blocks.pixels);
}

} // namespace

namespace AnnotationRenderer {

void draw(QPainter& painter, const Geometry::Flip& flip, const Annotation& annotation,
          const BaseImage& base)
{
    const Space space(flip);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    switch (annotation.kind) {
    case AnnotationKind::arrow:
        drawArrow(painter, space, annotation);
        break;
    case AnnotationKind::line:
        stroke(painter, polyline({annotation.start, annotation.end}, space), annotation.color(),
               lineWidth(annotation));
        break;
    case AnnotationKind::rect:
        strokeRectangle(painter, space(annotation.rect()), annotation.color(),
                        lineWidth(annotation));
        break;
    case AnnotationKind::ellipse:
        strokeEllipse(painter, space(annotation.rect()), annotation.color(), lineWidth(annotation));
        break;
    case AnnotationKind::freehand:
        drawStroke(painter, space, annotation, annotation.color(), lineWidth(annotation));
        break;
    case AnnotationKind::highlight:
        drawHighlight(painter, space, annotation);
        break;
    case AnnotationKind::text:
        drawLabel(painter, space, annotation);
        break;
    case AnnotationKind::counter:
        drawCounter(painter, space, annotation);
        break;
    case AnnotationKind::redact:
        drawRedaction(painter, space, reachableRect(annotation), base);
        break;
    }
    painter.restore();
}

} // namespace AnnotationRenderer
