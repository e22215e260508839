#pragma once

#include "Support/Geometry.h"

#include <QColor>
#include <QString>

QT_FORWARD_DECLARE_CLASS(QPainter)

/// Text in annotations: the system's font, bold, at any size in points, fractions too.
namespace AnnotationText {

/// The size that a label without one is drawn at, in points.
inline constexpr double defaultSize = 18;

/// The size of the layout box in points. Lines are as the text breaks them.
Geometry::Size measure(const QString& text, double size);

/// Everything that drawing `text` can change, its shadow too, from the bottom left corner of its
/// layout box, y up.
Geometry::Rect reach(const QString& text, double size);

/// Draws `text` with the bottom left corner of its layout box at `origin`, in the painter's own
/// space, and its shadow below it. Nothing at a size of zero and below.
void drawLabel(QPainter& painter, Geometry::TopLeftPoint origin, const QString& text, double size,
               const QColor& color);

/// The same without a shadow, and placed exactly: a label's base line is on a whole pixel. For text
/// that has outlines, as digits do.
void drawOutlines(QPainter& painter, Geometry::TopLeftPoint origin, const QString& text,
                  double size, const QColor& color);

} // namespace AnnotationText
