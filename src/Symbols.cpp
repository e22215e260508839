#include "Symbols.h"

#include "SymbolDesigns/Designs.h"

#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <map>

namespace {

using Symbols::Symbol;
using Symbols::Weight;

/// The width of lines, in ems.
double lineWidth(Weight weight)
{
    switch (weight) {
    case Weight::regular:
        return 0.1;
    case Weight::semibold:
        return 0.125;
    }
    Q_UNREACHABLE();
}

struct Entry {
    const char* name;
    SymbolDesigns::Design (*design)(double line);
};

Entry entry(Symbol symbol)
{
    namespace Designs = SymbolDesigns;
    switch (symbol) {
    case Symbol::arrowCounterclockwise:
        return {"arrow.counterclockwise", Designs::arrowCounterclockwise};
    case Symbol::arrowUpRight:
        return {"arrow.up.right", Designs::arrowUpRight};
    case Symbol::arrowUturnBackward:
        return {"arrow.uturn.backward", Designs::arrowUturnBackward};
    case Symbol::arrowUturnForward:
        return {"arrow.uturn.forward", Designs::arrowUturnForward};
    case Symbol::cameraViewfinder:
        return {"camera.viewfinder", Designs::cameraViewfinder};
    case Symbol::checkerboardRectangle:
        return {"checkerboard.rectangle", Designs::checkerboardRectangle};
    case Symbol::circle:
        return {"circle", Designs::circle};
    case Symbol::crop:
        return {"crop", Designs::crop};
    case Symbol::cursorArrow:
        return {"cursorarrow", Designs::cursorArrow};
    case Symbol::docOnDoc:
        return {"doc.on.doc", Designs::docOnDoc};
    case Symbol::highlighter:
        return {"highlighter", Designs::highlighter};
    case Symbol::lineDiagonal:
        return {"line.diagonal", Designs::lineDiagonal};
    case Symbol::micFill:
        return {"mic.fill", Designs::micFill};
    case Symbol::oneCircle:
        return {"1.circle", Designs::oneCircle};
    case Symbol::pauseFill:
        return {"pause.fill", Designs::pauseFill};
    case Symbol::pencil:
        return {"pencil", Designs::pencil};
    case Symbol::playFill:
        return {"play.fill", Designs::playFill};
    case Symbol::rectangle:
        return {"rectangle", Designs::rectangle};
    case Symbol::scribble:
        return {"scribble", Designs::scribble};
    case Symbol::speakerSlashFill:
        return {"speaker.slash.fill", Designs::speakerSlashFill};
    case Symbol::speakerWaveFill:
        return {"speaker.wave.2.fill", Designs::speakerWaveFill};
    case Symbol::stopCircleFill:
        return {"stop.circle.fill", Designs::stopCircleFill};
    case Symbol::stopFill:
        return {"stop.fill", Designs::stopFill};
    case Symbol::textFormat:
        return {"textformat", Designs::textFormat};
    case Symbol::trash:
        return {"trash", Designs::trash};
    case Symbol::videoFill:
        return {"video.fill", Designs::videoFill};
    case Symbol::xmark:
        return {"xmark", Designs::xmark};
    }
    Q_UNREACHABLE();
}

/// The symbol's design; joining its outlines takes longer than drawing them, so each is kept.
const SymbolDesigns::Design& designed(Symbol symbol, Weight weight)
{
    static std::map<std::pair<Symbol, Weight>, SymbolDesigns::Design> designs;
    const auto found = designs.find({symbol, weight});
    if (found != designs.end())
        return found->second;
    return designs.emplace(std::pair(symbol, weight), entry(symbol).design(lineWidth(weight)))
        .first->second;
}

QPainterPath fitted(const SymbolDesigns::Design& design, const QRectF& box)
{
    QTransform toBox;
    toBox.translate(box.x(), box.y());
    toBox.scale(box.width() / design.size.width(), box.height() / design.size.height());
    return toBox.map(design.outline);
}

/// `box` with its edges on device pixels, at least one pixel wide and high. Where the painter turns
/// or shears there are no such edges, and the box stays as it is.
QRectF onDevicePixels(const QPainter& painter, const QRectF& box)
{
    const QTransform transform = painter.deviceTransform();
    if (transform.type() > QTransform::TxScale)
        return box;
    const QRectF device = transform.mapRect(box);
    const double width = std::max(1.0, std::round(device.width()));
    const double height = std::max(1.0, std::round(device.height()));
    const QPointF corner = device.center() - QPointF(width / 2, height / 2);
    const QRectF snapped(std::floor(corner.x() + 0.5), std::floor(corner.y() + 0.5), width, height);
    return transform.inverted().mapRect(snapped);
}

} // namespace

QString Symbols::name(Symbol symbol)
{
    return QLatin1String{entry(symbol).name};
}

QSizeF Symbols::size(const Image& image)
{
    const auto& design = designed(image.symbol, image.weight);
    return design.size * (image.pointSize / design.pointSize);
}

void Symbols::draw(QPainter& painter, const Image& image, QPointF center, const QColor& tint)
{
    QRectF box(QPointF(0, 0), size(image));
    box.moveCenter(center);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(fitted(designed(image.symbol, image.weight), onDevicePixels(painter, box)),
                     tint);
    painter.restore();
}

QPainterPath Symbols::path(Symbol symbol, const QRectF& box)
{
    const auto& design = designed(symbol, Weight::regular);
    QRectF inside(QPointF(0, 0), design.size.scaled(box.size(), Qt::KeepAspectRatio));
    inside.moveCenter(box.center());
    return fitted(design, inside);
}
