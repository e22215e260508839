#pragma once

#include "Support/Geometry.h"

#include <QColor>
#include <QFont>
#include <QLinearGradient>

QT_FORWARD_DECLARE_CLASS(QPainter)

/// The dark visual kit that every panel shares: palette, gradients, pill.
namespace Chrome {

enum class Accent { none, blue, red };

/// A "#RRGGBB" colour in sRGB; `alpha` from 0 to 1.
QColor color(const char* hex, double alpha = 1);

const QColor& textPrimary();
const QColor& iconNormal();
const QColor& accentBlue();
const QColor& border();
const QColor& rimLight();

/// Gradients run from the top edge of whatever shape they fill to its bottom edge.
QLinearGradient barGradient();
QLinearGradient buttonGradient(Accent accent, bool pressed);
QColor buttonBorder(Accent accent);

/// The interface font at a size in points; semibold unless told otherwise.
QFont font(double size, QFont::Weight weight = QFont::DemiBold);

/// Loads the interface font and the shapes of common letters, for which the first text in a process
/// waits some milliseconds otherwise.
void loadFont();

/// Where a pill and its text stand for a text of a given size; y up.
struct PillLayout {
    /// The bottom left corner of the text's box.
    Geometry::Point textOrigin;
    Geometry::Rect pill;
    double radius = 0;
};

/// The pill for a text of `textSize` at `at`: its box's bottom left corner, or its bottom centre
/// when `centered`.
PillLayout pillLayout(Geometry::Size textSize, Geometry::Point at, bool centered);

/// The layout of the pill for `text`, measured in the pill's font.
PillLayout pillLayout(const QString& text, Geometry::Point at, bool centered);

/// Draws `text` in a pill. `at` is in the view's coordinates (y up), `flip` turns them into the
/// painter's.
void drawPill(QPainter& painter, const Geometry::Flip& flip, const QString& text,
              Geometry::Point at, bool centered);

} // namespace Chrome
