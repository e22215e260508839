#pragma once

#include "Editor/AnnotationDevice.h"

/// The shadow of text: black at alpha 0.45, blurred by a radius of 2 points, one point below.
namespace AnnotationShadow {

/// How far the shadow reaches past a box of such a height, in points.
double reach(double boxHeight);

/// Draws the shadow of text, which `drawText` draws. `box` is about where that is, and its lines
/// are so high: the blur reaches past it.
void draw(QPainter& painter, const QRectF& box, double lineHeight,
          const AnnotationDevice::DrawText& drawText);

} // namespace AnnotationShadow
