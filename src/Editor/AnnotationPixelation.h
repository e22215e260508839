#pragma once

#include "Editor/BaseImage.h"

#include <QRectF>

QT_FORWARD_DECLARE_CLASS(QPainter)

/// A part of a picture as coarse blocks.
namespace AnnotationPixelation {

/// Blocks of `blockSize` points from `rect`'s bottom left corner on, each the mean of the picture's
/// pixels in it and opaque; the last of a row or column is what is left. `rect` is in the picture's
/// space. Every pixel of the picture that `rect` touches is hidden as a whole, and nothing but the
/// picture decides the result.
struct Blocks {
    QImage pixels; ///< One for each pixel of the picture; null when `rect` lies outside.
    QPoint offset; ///< Where they stand in the picture: pixels, from its top left corner.
};

Blocks pixelated(const BaseImage& base, const Geometry::Rect& rect, double blockSize);

/// Draws pixels into `place` with hard edges, those of each of them and those of the whole, on
/// whole pixels of the device. What is seen of it is the same however the painter is clipped.
void draw(QPainter& painter, const QRectF& place, const QImage& pixels);

} // namespace AnnotationPixelation
