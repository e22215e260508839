#include "Symbols.h"

#include <QPainter>
#include <QPainterPath>
#include <QPainterPathStroker>
#include <QTransform>

#include <algorithm>

namespace {

// Symbols are designed in a square of this many units, y down. Curves are turned into lines where
// outlines are joined; at this size the lines are too short to be seen.
constexpr double side = 1000;

/// The line weight of outlined symbols.
constexpr double lineWidth = 85;

/// The outline of a line drawn with round ends, without overlaps.
QPainterPath stroked(const QPainterPath& line)
{
    QPainterPathStroker stroker;
    stroker.setWidth(lineWidth);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(line).simplified();
}

/// One corner of a viewfinder: two arms with a rounded bend, towards the corner of the box given by
/// the signs.
QPainterPath viewfinderCorner(double signX, double signY)
{
    constexpr double centre = side / 2;
    constexpr double reach = 440; // from the centre to the middle of the line
    constexpr double arm = 200;
    constexpr double bend = 110;
    const auto at = [signX, signY](double x, double y) {
        return QPointF(centre + signX * x, centre + signY * y);
    };
    QPainterPath line(at(reach - arm, reach));
    line.lineTo(at(reach - bend, reach));
    line.quadTo(at(reach, reach), at(reach, reach - bend));
    line.lineTo(at(reach, reach - arm));
    return line;
}

/// A camera's body with the hump of its finder, as one contour.
QPainterPath cameraBody()
{
    constexpr double left = 215;
    constexpr double right = 785;
    constexpr double top = 360;
    constexpr double bottom = 745;
    constexpr double corner = 75;
    QPainterPath body(QPointF(left, top + corner));
    body.quadTo(left, top, left + corner, top);
    body.lineTo(375, top);
    body.lineTo(415, 290);
    body.quadTo(427, 270, 450, 270);
    body.lineTo(550, 270);
    body.quadTo(573, 270, 585, 290);
    body.lineTo(625, top);
    body.lineTo(right - corner, top);
    body.quadTo(right, top, right, top + corner);
    body.lineTo(right, bottom - corner);
    body.quadTo(right, bottom, right - corner, bottom);
    body.lineTo(left + corner, bottom);
    body.quadTo(left, bottom, left, bottom - corner);
    body.closeSubpath();
    return body;
}

QPainterPath cameraViewfinder()
{
    QPainterPath result = cameraBody();
    // Every other contour is a hole: the ring of the lens, wide enough to be seen at 22 pixels.
    const QPointF lens(500, 545);
    result.addEllipse(lens, 150, 150);
    result.addEllipse(lens, 75, 75);
    for (const double signX : {-1.0, 1.0}) {
        for (const double signY : {-1.0, 1.0})
            result.addPath(stroked(viewfinderCorner(signX, signY)));
    }
    return result;
}

QPainterPath stopCircleFill()
{
    QPainterPath result;
    result.addEllipse(QPointF(500, 500), 460, 460);
    result.addRoundedRect(QRectF(335, 335, 330, 330), 45, 45);
    return result;
}

/// The symbol in the design square.
QPainterPath designed(Symbols::Symbol symbol)
{
    switch (symbol) {
    case Symbols::Symbol::cameraViewfinder:
        return cameraViewfinder();
    case Symbols::Symbol::stopCircleFill:
        return stopCircleFill();
    }
    Q_UNREACHABLE();
}

} // namespace

QPainterPath Symbols::path(Symbol symbol, const QRectF& box)
{
    const double size = std::min(box.width(), box.height());
    QTransform toBox;
    toBox.translate(box.center().x() - size / 2, box.center().y() - size / 2);
    toBox.scale(size / side, size / side);
    return toBox.map(designed(symbol));
}

void Symbols::draw(QPainter& painter, Symbol symbol, const QRectF& box, const QColor& tint)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path(symbol, box), tint);
    painter.restore();
}
