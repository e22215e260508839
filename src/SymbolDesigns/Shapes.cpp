#include "SymbolDesigns/Shapes.h"

#include <QLineF>
#include <QPainterPathStroker>
#include <QTransform>

#include <algorithm>
#include <vector>

namespace {

// Where outlines are joined Qt turns curves into lines, as fine as suits a path in pixels. A symbol
// is a dozen points wide but drawn at any scale, so that is done on a copy so many times as large.
constexpr double fineness = 64;

QPainterPath enlarged(const QPainterPath& path)
{
    return QTransform::fromScale(fineness, fineness).map(path);
}

QPainterPath reduced(const QPainterPath& path)
{
    return QTransform::fromScale(1 / fineness, 1 / fineness).map(path);
}

QPointF towards(QPointF from, QPointF to, double distance)
{
    const QLineF line(from, to);
    return line.pointAt(std::min(distance / line.length(), 0.5));
}

} // namespace

namespace SymbolDesigns {

QPainterPath stroke(const QPainterPath& line, double width)
{
    QPainterPathStroker stroker;
    stroker.setWidth(width * fineness);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return reduced(stroker.createStroke(enlarged(line)).simplified());
}

QPainterPath unite(const QPainterPath& a, const QPainterPath& b)
{
    return reduced(enlarged(a).united(enlarged(b)));
}

QPainterPath cut(const QPainterPath& shape, const QPainterPath& hole)
{
    return reduced(enlarged(shape).subtracted(enlarged(hole)));
}

QPainterPath polyline(std::initializer_list<QPointF> points)
{
    return roundedPolyline(points, 0);
}

QPainterPath roundedRect(const QRectF& box, double radius)
{
    QPainterPath path;
    path.addRoundedRect(box, radius, radius);
    return path;
}

QPainterPath disc(QPointF center, double radius)
{
    QPainterPath path;
    path.addEllipse(center, radius, radius);
    return path;
}

QPainterPath ring(QPointF center, double radius, double width)
{
    QPainterPath path = disc(center, radius);
    path.addEllipse(center, radius - width, radius - width);
    return path;
}

QPainterPath roundedPolygon(std::initializer_list<QPointF> corners, double radius)
{
    const std::vector<QPointF> at(corners);
    QPainterPath path;
    for (std::size_t i = 0; i < at.size(); ++i) {
        const QPointF before = at[(i + at.size() - 1) % at.size()];
        const QPointF after = at[(i + 1) % at.size()];
        const QPointF in = towards(at[i], before, radius);
        if (i == 0)
            path.moveTo(in);
        else
            path.lineTo(in);
        path.quadTo(at[i], towards(at[i], after, radius));
    }
    path.closeSubpath();
    return path;
}

QPainterPath roundedPolyline(std::initializer_list<QPointF> points, double radius)
{
    const std::vector<QPointF> at(points);
    QPainterPath path(at.front());
    for (std::size_t i = 1; i + 1 < at.size(); ++i) {
        path.lineTo(towards(at[i], at[i - 1], radius));
        path.quadTo(at[i], towards(at[i], at[i + 1], radius));
    }
    path.lineTo(at.back());
    return path;
}

QPainterPath mirrored(const QPainterPath& shape, double width)
{
    return QTransform(-1, 0, 0, 1, width, 0).map(shape);
}

} // namespace SymbolDesigns
