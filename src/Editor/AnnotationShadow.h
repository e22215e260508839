#pragma once

#include <QRectF>

#include <functional>

QT_FORWARD_DECLARE_CLASS(QPainter)

/// The shadow of text: black at alpha 0.45, blurred by a radius of 2 points, one point below.
namespace AnnotationShadow {

/// How far the shadow reaches past a box of such a height, in points.
double reach(double boxHeight);

/// Draws the shadow of what `drawShape` draws, which it does on a painter of the same space as
/// `painter`. `box` is about where that is: the blur reaches past it.
void draw(QPainter& painter, const QRectF& box,
          const std::function<void(QPainter& mask)>& drawShape);

} // namespace AnnotationShadow
