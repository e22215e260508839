#include "SymbolDesigns/Designs.h"

#include <QTransform>

namespace SymbolDesigns {

Design arrowUturnBackward(double line)
{
    constexpr double em = 13;
    const double width = line * em;
    const double edge = width / 2;
    constexpr double shaft = 4.6;
    constexpr double bottom = 13;
    QPainterPath turn(QPointF(edge + 0.3, shaft));
    const double radius = (bottom - edge - shaft) / 2;
    const double bend = 14 - edge - radius;
    turn.lineTo(bend, shaft);
    turn.arcTo(QRectF(bend - radius, shaft, 2 * radius, 2 * radius), 90, -180);
    turn.lineTo(5.2, bottom - edge);
    turn.addPath(polyline({{shaft - 0.3, edge + 0.2}, {edge + 0.2, shaft}, {shaft - 0.3, 9}}));
    return {em, {14, 13}, stroke(turn, width)};
}

Design arrowUturnForward(double line)
{
    Design design = arrowUturnBackward(line);
    design.outline = mirrored(design.outline, design.size.width());
    return design;
}

Design crop(double line)
{
    constexpr double em = 12;
    const double width = line * em;
    const double edge = width / 2;
    const double near = 2 + edge;
    const double far = 12 - edge;
    QPainterPath lines = polyline({{near, edge}, {near, far}, {14 - edge, far}});
    lines.addPath(polyline({{edge, near}, {far, near}, {far, 14 - edge}}));
    return {em, {14, 14}, stroke(lines, width)};
}

Design docOnDoc(double line)
{
    constexpr double em = 12;
    const double width = line * em * 0.9;
    const double edge = width / 2;
    const double left = 5 + edge;
    const double top = 5 + edge;
    const double right = 14 - edge;
    const double bottom = 16 - edge;
    constexpr double fold = 3.2;

    QPainterPath lines = roundedPolygon(
        {{left, top}, {right - fold, top}, {right, top + fold}, {right, bottom}, {left, bottom}},
        1.2);
    // The page behind, where the one in front does not hide it.
    lines.addPath(roundedPolyline({{3.2, 11 - edge},
                                   {edge, 11 - edge},
                                   {edge, edge},
                                   {9 - edge - 1.2, edge},
                                   {9 - edge, edge + 1.2},
                                   {9 - edge, 3.2}},
                                  1.2));
    return {em, {14, 16}, stroke(lines, width)};
}

Design pencil(double line)
{
    constexpr double em = 12;
    // Along the x axis from the point, then turned to write from the upper right.
    constexpr double half = 2.1;
    constexpr double shoulder = 4.4;
    constexpr double end = 17.2;
    constexpr double ferrule = 13.2;
    QPainterPath body = roundedPolygon(
        {{0, 0}, {shoulder, -half}, {end, -half}, {end, half}, {shoulder, half}}, 0.9);
    const double gap = line * em * 0.65;
    QPainterPath slit;
    slit.addRect(ferrule, -2 * half, gap, 4 * half);
    body = cut(body, slit);
    QTransform turn;
    turn.translate(0.5, 13.5);
    turn.rotate(-45);
    return {em, {14, 14}, turn.map(body)};
}

Design trash(double line)
{
    constexpr double em = 13;
    const double width = line * em;
    const double edge = width / 2;
    constexpr double lid = 3.4;
    QPainterPath lines = polyline({{edge, lid}, {14 - edge, lid}});
    lines.addPath(roundedPolyline({{4.8, lid}, {4.8, edge}, {9.2, edge}, {9.2, lid}}, 1.4));
    lines.addPath(
        roundedPolyline({{2.1, lid}, {2.8, 16 - edge}, {11.2, 16 - edge}, {11.9, lid}}, 1.8));
    const QPainterPath can = stroke(lines, width);
    QPainterPath ribs = polyline({{5.6, 6.6}, {5.75, 12.4}});
    ribs.addPath(polyline({{8.4, 6.6}, {8.25, 12.4}}));
    return {em, {14, 16}, unite(can, stroke(ribs, width * 0.72))};
}

Design xmark(double line)
{
    constexpr double em = 12;
    const double width = line * em * 1.12;
    const double edge = width / 2;
    QPainterPath lines = polyline({{edge, edge}, {10 - edge, 10 - edge}});
    lines.addPath(polyline({{10 - edge, edge}, {edge, 10 - edge}}));
    return {em, {10, 10}, stroke(lines, width)};
}

} // namespace SymbolDesigns
