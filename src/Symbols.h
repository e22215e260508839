#pragma once

#include <QColor>
#include <QRectF>

QT_FORWARD_DECLARE_CLASS(QPainter)
QT_FORWARD_DECLARE_CLASS(QPainterPath)

/// The symbol images of the program, drawn by code at any size.
namespace Symbols {

enum class Symbol {
    cameraViewfinder, ///< "camera.viewfinder"
    stopCircleFill,   ///< "stop.circle.fill"
};

/// The symbol's outline inside `box` (y down), as large as fits, centred; to be filled by the
/// odd-even rule.
QPainterPath path(Symbol symbol, const QRectF& box);

/// Fills the symbol with `tint` inside `box` (logical pixels), as large as fits, centred.
void draw(QPainter& painter, Symbol symbol, const QRectF& box, const QColor& tint);

} // namespace Symbols
