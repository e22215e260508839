#pragma once

#include <QRectF>

QT_FORWARD_DECLARE_CLASS(QPainter)

/// The shadow of a floating panel that paints its own.
namespace SoftShadow {

/// How far a shadow reaches beyond its body at most, in points.
inline constexpr double reach = 18;

/// Paints the shadow of `body`, a rectangle with round corners, and also what is behind the body.
void paint(QPainter& painter, const QRectF& body, double cornerRadius);

} // namespace SoftShadow
