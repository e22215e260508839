#pragma once

#include <QColor>
#include <QPainterPath>
#include <QRectF>
#include <QString>

#include <array>

QT_FORWARD_DECLARE_CLASS(QPainter)

/// The symbol images of the program, drawn by code at any size.
namespace Symbols {

enum class Symbol {
    arrowCounterclockwise,
    arrowUpRight,
    arrowUturnBackward,
    arrowUturnForward,
    cameraViewfinder,
    checkerboardRectangle,
    circle,
    crop,
    cursorArrow,
    docOnDoc,
    highlighter,
    lineDiagonal,
    micFill,
    oneCircle,
    pauseFill,
    pencil,
    playFill,
    rectangle,
    scribble,
    speakerSlashFill,
    speakerWaveFill,
    stopCircleFill,
    stopFill,
    textFormat,
    trash,
    videoFill,
    xmark,
};

inline constexpr std::array allSymbols = {
    Symbol::arrowCounterclockwise,
    Symbol::arrowUpRight,
    Symbol::arrowUturnBackward,
    Symbol::arrowUturnForward,
    Symbol::cameraViewfinder,
    Symbol::checkerboardRectangle,
    Symbol::circle,
    Symbol::crop,
    Symbol::cursorArrow,
    Symbol::docOnDoc,
    Symbol::highlighter,
    Symbol::lineDiagonal,
    Symbol::micFill,
    Symbol::oneCircle,
    Symbol::pauseFill,
    Symbol::pencil,
    Symbol::playFill,
    Symbol::rectangle,
    Symbol::scribble,
    Symbol::speakerSlashFill,
    Symbol::speakerWaveFill,
    Symbol::stopCircleFill,
    Symbol::stopFill,
    Symbol::textFormat,
    Symbol::trash,
    Symbol::videoFill,
    Symbol::xmark,
};

/// What symbol images are called on desktops that bring them along, such as "arrow.up.right".
QString name(Symbol symbol);

/// How heavy lines are, beside text of the same weight.
enum class Weight { regular, semibold };

/// A symbol at a size.
struct Image {
    Symbol symbol = Symbol::circle;
    /// The size of the text that the symbol goes with, in points.
    double pointSize = 13;
    Weight weight = Weight::regular;
    /// What the image says, for those who cannot see it.
    QString description;
};

/// The image's width and height in points.
QSizeF size(const Image& image);

/// Draws the image with its middle at `center`, its shape filled with `tint`. The edges of its box
/// are moved to the nearest device pixels, so that straight lines stay sharp at any scale.
void draw(QPainter& painter, const Image& image, QPointF center, const QColor& tint);

/// The symbol's outline inside `box` (y down), as large as fits, centred.
QPainterPath path(Symbol symbol, const QRectF& box);

} // namespace Symbols
