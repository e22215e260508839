#include "StatusIcon.h"

#include "Symbols.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <array>
#include <cmath>

namespace {

/// The sizes that tray hosts ask for, in pixels, at scales from 1 to 3.
constexpr std::array sizes = {16, 18, 20, 22, 24, 28, 32, 36, 40, 44, 48, 64};

const QColor lightBody(0xF4, 0xF6, 0xF8);
const QColor recordingRed(0xFF, 0x3B, 0x30);
const QColor darkRim(0x10, 0x12, 0x16, 0xD0);

QPixmap draw(Symbols::Symbol symbol, const QColor& body, int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);

    // The rim takes whole pixels all round, so that the edges inside it are sharp.
    const double rim = std::max(1.0, std::round(size / 22.0));
    const QRectF box(rim, rim, size - 2 * rim, size - 2 * rim);
    painter.strokePath(Symbols::path(symbol, box),
                       QPen(darkRim, 2 * rim, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(Symbols::path(symbol, box), body);
    return pixmap;
}

} // namespace

QIcon StatusIcon::icon(bool recording)
{
    QIcon icon;
    for (const int size : sizes) {
        icon.addPixmap(recording ? draw(Symbols::Symbol::stopCircleFill, recordingRed, size)
                                 : draw(Symbols::Symbol::cameraViewfinder, lightBody, size));
    }
    return icon;
}
