#include "SymbolDesigns/Designs.h"

#include <QtMath>

#include <cmath>

namespace {

/// The symbols of the status area fill a square of this side and serve as icons too.
constexpr double statusSide = 16;

/// One corner of a viewfinder: two arms with a rounded bend, towards the corner of the box given by
/// the signs.
QPainterPath viewfinderCorner(double signX, double signY, double edge)
{
    constexpr double centre = statusSide / 2;
    const double reach = centre - edge; // from the centre to the middle of the line
    constexpr double arm = 3.2;
    constexpr double bend = 1.8;
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
    constexpr double left = 3.4;
    constexpr double right = 12.6;
    constexpr double top = 5.7;
    constexpr double bottom = 12;
    constexpr double corner = 1.2;
    QPainterPath body(QPointF(left, top + corner));
    body.quadTo(left, top, left + corner, top);
    body.lineTo(6.0, top);
    body.lineTo(6.6, 4.6);
    body.quadTo(6.8, 4.3, 7.2, 4.3);
    body.lineTo(8.8, 4.3);
    body.quadTo(9.2, 4.3, 9.4, 4.6);
    body.lineTo(10.0, top);
    body.lineTo(right - corner, top);
    body.quadTo(right, top, right, top + corner);
    body.lineTo(right, bottom - corner);
    body.quadTo(right, bottom, right - corner, bottom);
    body.lineTo(left + corner, bottom);
    body.quadTo(left, bottom, left, bottom - corner);
    body.closeSubpath();
    return body;
}

/// A loudspeaker seen from its side, at the left of a box of 16 x 14.
QPainterPath speaker()
{
    using namespace SymbolDesigns;
    return unite(roundedRect({0.4, 4.2, 5, 5.6}, 1.2),
                 roundedPolygon({{2.2, 7}, {8, 1.2}, {8, 12.8}}, 1));
}

} // namespace

namespace SymbolDesigns {

Design arrowCounterclockwise(double line)
{
    constexpr double em = 12;
    const double width = line * em;
    const double edge = width / 2;
    constexpr QPointF centre(7, 9.5);
    const double radius = 6.5 - edge;
    const QRectF circle(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
    // From the upper left round to the top, where the arrow's point is.
    constexpr double from = 152;
    constexpr double to = 360 + 92;
    QPainterPath lines;
    lines.arcMoveTo(circle, from);
    lines.arcTo(circle, from, to - from);
    const QPointF point = lines.currentPosition();
    constexpr double head = 2.9;
    lines.addPath(polyline(
        {point + QPointF(head * 0.85, -head), point, point + QPointF(head * 0.95, head - 0.1)}));
    return {em, {14, 16}, stroke(lines, width)};
}

Design cameraViewfinder(double line)
{
    constexpr double em = 13;
    const double width = line * em;
    QPainterPath result = cameraBody();
    // Every other contour is a hole: the ring of the lens, wide enough to be seen at 22 pixels.
    constexpr QPointF lens(8, 8.75);
    result.addEllipse(lens, 2.4, 2.4);
    result.addEllipse(lens, 1.2, 1.2);
    for (const double signX : {-1.0, 1.0}) {
        for (const double signY : {-1.0, 1.0})
            result.addPath(stroke(viewfinderCorner(signX, signY, width / 2), width));
    }
    return {em, {statusSide, statusSide}, result};
}

Design micFill(double line)
{
    constexpr double em = 12;
    const double width = line * em * 0.9;
    const double edge = width / 2;
    constexpr double middle = 5;
    const QPainterPath capsule = roundedRect({middle - 2.4, 0, 4.8, 8.4}, 2.4);
    const double radius = middle - edge;
    constexpr double rim = 6;
    QPainterPath lines(QPointF(edge, rim - 0.4));
    lines.lineTo(edge, rim);
    lines.arcTo(QRectF(edge, rim - radius, 2 * radius, 2 * radius), 180, 180);
    lines.lineTo(10 - edge, rim - 0.4);
    lines.addPath(polyline({{middle, rim + radius}, {middle, 14 - edge}}));
    lines.addPath(polyline({{2.6, 14 - edge}, {7.4, 14 - edge}}));
    return {em, {10, 14}, unite(capsule, stroke(lines, width))};
}

Design pauseFill(double)
{
    QPainterPath bars = roundedRect({0, 0, 3.5, 12}, 1);
    bars.addPath(roundedRect({6.5, 0, 3.5, 12}, 1));
    return {12, {10, 12}, bars};
}

Design playFill(double)
{
    // Its middle of mass, not that of its box, stands in the middle.
    return {12, {12, 12}, roundedPolygon({{1, -0.6}, {12.6, 6}, {1, 12.6}}, 1.5)};
}

Design speakerSlashFill(double line)
{
    constexpr double em = 12;
    const double width = line * em;
    const QPainterPath slash = polyline({{2, 1.2}, {14.6, 12.8}});
    // A gap above keeps it apart.
    const QPainterPath broken =
        cut(speaker().translated(3.6, 0), stroke(slash.translated(0.75, -0.75), width * 1.8));
    return {em, {16, 14}, unite(broken, stroke(slash, width))};
}

Design speakerWaveFill(double line)
{
    constexpr double em = 12;
    const double width = line * em;
    constexpr QPointF mouth(6.4, 7);
    QPainterPath waves;
    for (const double radius : {4.0, 7.6}) {
        constexpr double half = 50;
        const QRectF circle(mouth.x() - radius, mouth.y() - radius, 2 * radius, 2 * radius);
        waves.arcMoveTo(circle, -half);
        waves.arcTo(circle, -half, 2 * half);
    }
    return {em, {16, 14}, unite(speaker(), stroke(waves, width))};
}

Design stopCircleFill(double)
{
    QPainterPath result = disc({8, 8}, 8);
    result.addRoundedRect(QRectF(5.1, 5.1, 5.8, 5.8), 0.8, 0.8);
    return {13, {statusSide, statusSide}, result};
}

Design stopFill(double)
{
    return {12, {10, 10}, roundedRect({0, 0, 10, 10}, 1.7)};
}

Design videoFill(double)
{
    QPainterPath camera = roundedRect({0, 0, 11.6, 11}, 2.6);
    camera.addPath(roundedPolygon({{12.8, 4.1}, {17.4, 0.9}, {17.4, 10.1}, {12.8, 6.9}}, 0.9));
    return {12, {17.4, 11}, camera};
}

} // namespace SymbolDesigns
