#include "Platform/Linux/NativeScreen.h"

#include "Platform/Linux/QtGeometry.h"

#include <QGuiApplication>
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

QList<QScreen*> NativeScreen::primaryFirst()
{
    QList<QScreen*> screens = QGuiApplication::screens();
    QScreen* primary = QGuiApplication::primaryScreen();
    if (primary && screens.removeOne(primary))
        screens.prepend(primary);
    return screens;
}

std::vector<ScreenTable::Screen> NativeScreen::table()
{
    std::vector<ScreenTable::Screen> result;
    const QList<QScreen*> screens = primaryFirst();
    for (const QScreen* screen : screens) {
        const QRect native = pixels(*screen);
        const QRectF frame =
            QRectF(screen->geometry()).translated(-QPointF(screens.front()->geometry().topLeft()));
        result.push_back({
            .name = screen->name().toStdString(),
            .frame = topLeftRect(frame),
            .pixels = {native.x(), native.y(), native.width(), native.height()},
            .scale = screen->devicePixelRatio(),
        });
    }
    return result;
}
