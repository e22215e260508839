#include "SymbolDesigns/Designs.h"

#include <QTransform>

namespace {

/// The text size of the editor's toolbar.
constexpr double em = 13;

} // namespace

namespace SymbolDesigns {

Design arrowUpRight(double line)
{
    const double width = line * em;
    const double edge = width / 2;
    QPainterPath lines = polyline({{edge, 12 - edge}, {12 - edge, edge}});
    lines.addPath(polyline({{4.2, edge}, {12 - edge, edge}, {12 - edge, 7.8}}));
    return {em, {12, 12}, stroke(lines, width)};
}

Design checkerboardRectangle(double line)
{
    const double width = line * em * 0.85;
    const QRectF box(0, 0, 18, 14);
    const QRectF inside = box.adjusted(width, width, -width, -width);
    QPainterPath result = cut(roundedRect(box, 2.6), roundedRect(inside, 2.6 - width));
    constexpr int columns = 5;
    constexpr int rows = 4;
    const double cellWidth = inside.width() / columns;
    const double cellHeight = inside.height() / rows;
    QPainterPath cells;
    for (int row = 0; row < rows; ++row) {
        for (int column = row % 2; column < columns; column += 2) {
            cells.addRect(inside.x() + column * cellWidth, inside.y() + row * cellHeight, cellWidth,
                          cellHeight);
        }
    }
    return {em, box.size(), unite(result, cells)};
}

Design circle(double line)
{
    return {em, {16, 16}, ring({8, 8}, 8, line * em)};
}

Design cursorArrow(double)
{
    return {em,
            {11, 16},
            roundedPolygon({{0, -0.2},
                            {0, 14.2},
                            {3.3, 11.2},
                            {5.5, 16.1},
                            {8.3, 14.9},
                            {6.1, 10.1},
                            {11.1, 10.1}},
                           0.7)};
}

Design highlighter(double line)
{
    const double width = line * em;
    // Along the x axis from the nib, then turned to write from the upper right.
    constexpr double half = 3;
    QPainterPath marker = roundedPolygon(
        {{7.4, -half}, {16.8, -half}, {16.8, half}, {7.4, half}, {5.4, half - 1}, {5.4, 1 - half}},
        1.1);
    marker.addPath(roundedPolygon({{4.3, -1.9}, {4.3, 1.9}, {1.2, 1.9}, {2.6, -1.9}}, 0.5));
    QTransform turn;
    turn.translate(1.4, 14.1);
    turn.rotate(-45);
    const QPainterPath base =
        stroke(polyline({{width / 2, 16 - width / 2}, {9, 16 - width / 2}}), width);
    return {em, {16, 16}, unite(turn.map(marker), base)};
}

Design lineDiagonal(double line)
{
    const double width = line * em;
    const double edge = width / 2;
    return {em, {12, 12}, stroke(polyline({{edge, 12 - edge}, {12 - edge, edge}}), width)};
}

Design oneCircle(double line)
{
    const double width = line * em;
    QPainterPath result = ring({8, 8}, 8, width);
    result.addPath(stroke(polyline({{6.2, 5.7}, {8.4, 4.4}, {8.4, 11.6}}), width));
    return {em, {16, 16}, result};
}

Design rectangle(double line)
{
    const double width = line * em;
    const QRectF box(0, 0, 18, 14);
    QPainterPath result = roundedRect(box, 2.6);
    result.addPath(roundedRect(box.adjusted(width, width, -width, -width), 2.6 - width / 2));
    return {em, box.size(), result};
}

Design scribble(double line)
{
    const double width = line * em;
    QPainterPath curve(QPointF(0.9, 5.2));
    curve.cubicTo(2.2, 2.6, 4.6, 0.8, 5.9, 1.2);
    curve.cubicTo(7.6, 1.8, 2.0, 9.0, 3.0, 10.2);
    curve.cubicTo(4.0, 11.4, 8.6, 3.4, 10.3, 4.0);
    curve.cubicTo(11.8, 4.6, 7.4, 11.0, 8.6, 12.6);
    curve.cubicTo(9.8, 14.0, 13.4, 11.6, 15.1, 8.6);
    return {em, {16, 14}, stroke(curve, width)};
}

Design textFormat(double line)
{
    const double width = line * em;
    const double edge = width / 2;
    constexpr double baseline = 12;
    QPainterPath lines =
        polyline({{edge, baseline - edge}, {4.6, edge}, {9.2 - edge, baseline - edge}});
    lines.addPath(polyline({{2.3, 8}, {6.9, 8}}));
    constexpr double bowl = 2.9;
    const double stem = 17 - edge;
    lines.addEllipse(QPointF(stem - bowl, baseline - edge - bowl), bowl, bowl);
    lines.addPath(polyline({{stem, baseline - edge - 2 * bowl}, {stem, baseline - edge}}));
    return {em, {17, 12}, stroke(lines, width)};
}

} // namespace SymbolDesigns
