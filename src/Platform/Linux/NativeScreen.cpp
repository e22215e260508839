#include "Platform/Linux/NativeScreen.h"

#include <QRectF>
#include <QScreen>
#include <qpa/qplatformscreen.h>

QRect NativeScreen::pixels(const QScreen& screen)
{
    return screen.handle()->geometry();
}

QRectF NativeScreen::logical(const QScreen& screen, QRect nativePart)
{
    const double scale = screen.devicePixelRatio();
    const QPoint native = pixels(screen).topLeft();
    const QPointF origin = screen.geometry().topLeft();
    return {origin + QPointF(nativePart.topLeft() - native) / scale,
            QSizeF(nativePart.size()) / scale};
}
