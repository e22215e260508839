#pragma once

#include "Support/Geometry.h"

#include <QColor>
#include <QString>

#include <optional>

QT_FORWARD_DECLARE_CLASS(QPainter)

/// Text in annotations: the system's font, bold, at any size in points, fractions too.
namespace AnnotationText {

/// The size that a label without one is drawn at, in points.
inline constexpr double defaultSize = 18;

struct Style {
    double size = defaultSize; ///< In points. Nothing is drawn at zero and below.
    QColor color;
    bool hasShadow = false; ///< Black at 0.45, blurred by 2 points, one point below.
};

/// The size of the layout box in points. Lines are as the text breaks them.
Geometry::Size measure(const QString& text, double size);

/// Draws `text` with the bottom left corner of its layout box at `origin`, in the painter's own
/// space.
void draw(QPainter& painter, Geometry::TopLeftPoint origin, const QString& text,
          const Style& style);

} // namespace AnnotationText
