#pragma once

#include <QPainterPath>
#include <QPointF>
#include <QSizeF>

#include <initializer_list>

/// What symbols are built from. Everything is in points with y down.
namespace SymbolDesigns {

/// One symbol, drawn at the text size at which it is mostly used.
struct Design {
    /// That text size, in points.
    double pointSize = 12;
    /// The box that the symbol fills, from (0, 0).
    QSizeF size;
    /// To be filled; no two of its contours cross.
    QPainterPath outline;
};

/// The outline of a line of `width` along `line`, with round ends and joins and no overlaps.
QPainterPath stroke(const QPainterPath& line, double width);

/// What either of the two covers.
QPainterPath unite(const QPainterPath& a, const QPainterPath& b);

/// What `shape` covers and `hole` does not.
QPainterPath cut(const QPainterPath& shape, const QPainterPath& hole);

QPainterPath polyline(std::initializer_list<QPointF> points);
QPainterPath roundedRect(const QRectF& box, double radius);
QPainterPath disc(QPointF center, double radius);

/// The outline of a ring whose outer radius is `radius`.
QPainterPath ring(QPointF center, double radius, double width);

/// A filled polygon whose corners are rounded off over `radius` along each edge.
QPainterPath roundedPolygon(std::initializer_list<QPointF> corners, double radius);

/// As `polyline`, with its inner corners rounded off over `radius`.
QPainterPath roundedPolyline(std::initializer_list<QPointF> points, double radius);

/// `shape` turned over left to right inside a box of `width`.
QPainterPath mirrored(const QPainterPath& shape, double width);

} // namespace SymbolDesigns
