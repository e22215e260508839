#pragma once

#include "Editor/Annotation.h"
#include "Editor/BaseImage.h"

#include <QColor>
#include <QImage>
#include <QString>

#include <functional>

/// Marks as formulas, to compare drawn ones with. Everything in points, y up.
namespace Shapes {

using Geometry::Point;

/// How far outside of a shape a point is; negative inside.
using Distance = std::function<double(Point)>;

/// A line with round ends.
Distance capsule(Point from, Point to, double width);

/// Lines with round ends and joins.
Distance chain(const QList<Point>& points, double width);

/// A filled triangle.
Distance triangle(Point a, Point b, Point c);

Distance disc(Point centre, double radius);

/// The outline of a rectangle with round corners.
Distance roundedOutline(const Geometry::Rect& rect, double radius, double width);

/// The outline of the ellipse in a rectangle.
Distance ellipseOutline(const Geometry::Rect& rect, double width);

Distance united(Distance a, Distance b);

} // namespace Shapes

inline const QColor testGround(0xC8, 0xDC, 0xF0);

/// A plain picture of so many points.
BaseImage plainPicture(Geometry::Size points, double density, const QColor& color = testGround);

/// Fails where a pixel of `image` is not the ground with the shape over it in `color`: a share of
/// it where the pixel lies on the shape's edge.
void expectShape(const QImage& image, double density, const Shapes::Distance& shape,
                 const QColor& color);

/// The pixel that holds a point of a picture.
QColor colorAt(const QImage& image, double density, Geometry::Point point);

Annotation markOf(AnnotationKind kind, Geometry::Point start, Geometry::Point end, double lineWidth,
                  const char* color = "#FF3B30");

Annotation strokeOf(AnnotationKind kind, QList<Geometry::Point> path, double lineWidth,
                    const char* color = "#FF3B30");
