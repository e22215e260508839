#pragma once

#include "Support/Geometry.h"

#include <QColor>
#include <QList>
#include <QString>
#include <QUuid>

#include <cstdint>
#include <optional>

/// What a mark is. The names are those that files use.
enum class AnnotationKind {
    arrow,
    line,
    rect,
    ellipse,
    freehand,
    highlight,
    text,
    counter,
    redact,
};

/// One mark over a picture. Points are in the picture's space: points, origin at its bottom left.
///
/// A value. Copies share their strokes until one changes, so that copies of whole lists cost
/// little.
struct Annotation {
    QUuid id = QUuid::createUuid();
    AnnotationKind kind = AnnotationKind::arrow;
    /// An arrow's tail, a label's bottom left corner, a counter's centre.
    Geometry::Point start = {};
    Geometry::Point end = {};                        ///< An arrow's head.
    std::optional<QList<Geometry::Point>> path = {}; ///< Freehand strokes and highlights.
    std::optional<QString> text = {};                ///< Labels.
    std::optional<double> fontSize = {};             ///< Labels: in points.
    std::optional<std::int64_t> number = {};         ///< Counters.
    QString colorHex = {};                           ///< See `color`.
    double lineWidth = 0; ///< In points; a counter's badge grows with it.

    friend bool operator==(const Annotation&, const Annotation&) = default;

    /// Moves every point of it.
    void translate(double dx, double dy);

    /// The rectangle that `start` and `end` span.
    Geometry::Rect rect() const { return Geometry::Rect::spanning(start, end); }

    /// `colorHex` as a colour.
    QColor color() const { return color(colorHex); }

    /// The opaque sRGB colour that the last 24 bits of a hexadecimal number give: red, green, blue.
    /// Number signs, white space in front and what follows the number do not matter; black when
    /// there is no number.
    static QColor color(const QString& hex);
};
