#include "Editor/AnnotationRenderer.h"

#include "Editor/AnnotationPixelation.h"
#include "Editor/AnnotationText.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

constexpr double cornerRadius = 2;
constexpr double highlightOpacity = 0.45;
constexpr double highlightWidth = 4.5; // of the line width
constexpr double redactionBlock = 9;
constexpr double smallestRedaction = 2; // nothing is drawn up to it
constexpr double textMargin = 6;
constexpr double counterMargin = 4;
constexpr double counterTextSize = 1.1; // of the radius

double arrowHeadLength(double width)
{
    return std::max(width * 3.5, 12.0);
}

double counterRadius(double width)
{
    return std::max(width * 3.2, 12.0);
}

double labelSize(const Annotation& annotation)
{
    return annotation.fontSize.value_or(AnnotationText::defaultSize);
}

// Files can hold any number. What lies farther out than this is not seen, but would keep Qt busy;
// both are in points.
constexpr double farthest = 50'000;
constexpr double thickest = 10'000;

double lineWidth(const Annotation& annotation)
{
    return std::clamp(annotation.lineWidth, 0.0, thickest);
}

/// The picture's points as the painter's.
class Space {
public:
    explicit Space(const Geometry::Flip& flip)
        : m_flip(flip)
    {
    }

    QPointF operator()(Geometry::Point point) const
    {
        const Geometry::TopLeftPoint p = m_flip.topLeftFromBottomLeft(point);
        return {std::clamp(p.x, -farthest, farthest), std::clamp(p.y, -farthest, farthest)};
    }

    QRectF operator()(const Geometry::Rect& rect) const
    {
        return {(*this)(Geometry::Point{rect.minX(), rect.maxY()}),
                (*this)(Geometry::Point{rect.maxX(), rect.minY()})};
    }

    Geometry::TopLeftPoint textOrigin(Geometry::Point point) const
    {
        return m_flip.topLeftFromBottomLeft(point);
    }

private:
    const Geometry::Flip& m_flip;
};

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
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(path);
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
    const Geometry::Point tail = annotation.start;
    const Geometry::Point tip = annotation.end;
    const double angle = std::atan2(tip.y - tail.y, tip.x - tail.x);
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const double length = arrowHeadLength(lineWidth(annotation));
    const auto behindTip = [&](double distance) {
        return Geometry::Point{tip.x - distance * cosine, tip.y - distance * sine};
    };
    const QColor color = annotation.color();

    // It stops short of the tip, which would be blunt otherwise.
    stroke(painter, polyline({tail, behindTip(0.8 * length)}, space), color, lineWidth(annotation));

    const double halfWidth = length * 0.7 * 0.5;
    const Geometry::Point base = behindTip(length);
    const Geometry::Point left{base.x - halfWidth * sine, base.y + halfWidth * cosine};
    const Geometry::Point right{base.x + halfWidth * sine, base.y - halfWidth * cosine};
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPolygon(QList<QPointF>{space(tip), space(left), space(right)});
}

void drawStroke(QPainter& painter, const Space& space, const Annotation& annotation,
                const QColor& color, double width)
{
    if (annotation.path && annotation.path->size() >= 2)
        stroke(painter, polyline(*annotation.path, space), color, width);
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

    const QString number = QString::number(annotation.number.value_or(0));
    const double size = radius * counterTextSize;
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
    const QRectF place = space(
        Geometry::Rect{blocks.offset.x() / scaleX,
                       base.size.height - (blocks.offset.y() + blocks.pixels.height()) / scaleY,
                       blocks.pixels.width() / scaleX, blocks.pixels.height() / scaleY});
    // Edges are hard, those of the blocks and those of the whole.
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform, false);
    painter.drawImage(place, blocks.pixels);
}

/// The smallest rectangle that holds all points, of which there is one at least.
Geometry::Rect hull(const QList<Geometry::Point>& points)
{
    Geometry::Point least = points.front();
    Geometry::Point most = least;
    for (const Geometry::Point& point : points) {
        least = {std::min(least.x, point.x), std::min(least.y, point.y)};
        most = {std::max(most.x, point.x), std::max(most.y, point.y)};
    }
    return Geometry::Rect::spanning(least, most);
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

} // namespace AnnotationRenderer
