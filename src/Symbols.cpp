#include "Symbols.h"

#include <QPainter>
#include <QPainterPath>
#include <QPainterPathStroker>

#include <algorithm>

namespace {

/// The line weight of outlined symbols, as a share of the box.
constexpr double lineWidth = 0.085;

QPainterPath stroked(const QPainterPath& line, double width = lineWidth)
{
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(line);
}

/// One corner of a viewfinder: two arms with a rounded bend, towards the corner of the box given by
/// the signs.
QPainterPath viewfinderCorner(double signX, double signY)
{
    constexpr double reach = 0.44; // from the centre to the middle of the line
    constexpr double arm = 0.20;
    constexpr double bend = 0.10;
    const auto at = [signX, signY](double x, double y) {
        return QPointF(0.5 + signX * x, 0.5 + signY * y);
    };
    QPainterPath line(at(reach - arm, reach));
    line.lineTo(at(reach - bend, reach));
    line.quadTo(at(reach, reach), at(reach, reach - bend));
    line.lineTo(at(reach, reach - arm));
    return line;
}

QPainterPath cameraViewfinder()
{
    QPainterPath result;
    result.setFillRule(Qt::WindingFill);
    for (const double signX : {-1.0, 1.0}) {
        for (const double signY : {-1.0, 1.0})
            result.addPath(stroked(viewfinderCorner(signX, signY)));
    }

    // A small camera in the middle: a body with a hump, less the ring of its lens.
    QPainterPath body;
    body.addRoundedRect(QRectF(0.24, 0.37, 0.52, 0.35), 0.065, 0.065);
    QPainterPath hump;
    hump.moveTo(0.375, 0.40);
    hump.lineTo(0.425, 0.315);
    hump.quadTo(0.435, 0.295, 0.46, 0.295);
    hump.lineTo(0.54, 0.295);
    hump.quadTo(0.565, 0.295, 0.575, 0.315);
    hump.lineTo(0.625, 0.40);
    hump.closeSubpath();
    QPainterPath outerLens;
    outerLens.addEllipse(QPointF(0.5, 0.54), 0.125, 0.125);
    QPainterPath innerLens;
    innerLens.addEllipse(QPointF(0.5, 0.54), 0.07, 0.07);
    result.addPath(body.united(hump).subtracted(outerLens).united(innerLens));
    return result;
}

QPainterPath stopCircleFill()
{
    QPainterPath disc;
    disc.addEllipse(QPointF(0.5, 0.5), 0.46, 0.46);
    QPainterPath square;
    square.addRoundedRect(QRectF(0.335, 0.335, 0.33, 0.33), 0.045, 0.045);
    return disc.subtracted(square);
}

} // namespace

QPainterPath Symbols::path(Symbol symbol)
{
    switch (symbol) {
    case Symbol::cameraViewfinder:
        return cameraViewfinder();
    case Symbol::stopCircleFill:
        return stopCircleFill();
    }
    Q_UNREACHABLE();
}

void Symbols::draw(QPainter& painter, Symbol symbol, const QRectF& box, const QColor& tint)
{
    const double side = std::min(box.width(), box.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(box.center() - QPointF(side / 2, side / 2));
    painter.scale(side, side);
    painter.fillPath(path(symbol), tint);
    painter.restore();
}
