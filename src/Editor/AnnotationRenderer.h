#pragma once

#include "Editor/Annotation.h"
#include "Editor/BaseImage.h"

#include <QByteArray>

#include <optional>

QT_FORWARD_DECLARE_CLASS(QPainter)

/// Draws annotations: on the screen and into flattened copies by the same code.
namespace AnnotationRenderer {

/// Draws one annotation. `flip` turns the picture's space into that of `painter`, which is in
/// points, however many pixels those have. `base` is the picture without annotations: redactions
/// show it, never what has been drawn over it. Leaves the painter as it was.
void draw(QPainter& painter, const Geometry::Flip& flip, const Annotation& annotation,
          const BaseImage& base);

/// The place of an annotation with a margin around it, to be hit and to be outlined.
Geometry::Rect bounds(const Annotation& annotation);

/// Everything that drawing it can change, but for what comes from rounding to whole pixels: two of
/// the painter's and, for redactions, one of the picture's.
Geometry::Rect painted(const Annotation& annotation);
/// The same of what the last point of a stroke's path changes.
Geometry::Rect paintedStrokeEnd(const Annotation& annotation);

/// The picture with all annotations, the first lowest, at its full size in pixels.
/// Null when there is not memory enough.
QImage flattened(const BaseImage& base, const QList<Annotation>& annotations);

/// The same as a PNG file with the picture's density: nothing in it but the new pixels.
std::optional<QByteArray> flattenedPng(const BaseImage& base, const QList<Annotation>& annotations);

} // namespace AnnotationRenderer
