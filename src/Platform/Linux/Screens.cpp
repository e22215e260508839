#include "Platform/Screens.h"

#include "Platform/Linux/NativeScreen.h"
#include "Platform/Linux/QtGeometry.h"
#include "Platform/Linux/X11/Struts.h"

#include <QCursor>
#include <QGuiApplication>

namespace {

/// The screen less panels. QScreen::availableGeometry ignores panels when there are several
/// screens.
QRectF visibleGeometry(const QScreen& screen)
{
    const QRect native = NativeScreen::pixels(screen);
    const QRect visible = X11::visibleNative(native);
    if (visible == native)
        return screen.geometry();
    return NativeScreen::logical(screen, visible) & QRectF(screen.geometry());
}

QList<QScreen*> primaryFirst()
{
    QList<QScreen*> screens = QGuiApplication::screens();
    QScreen* primary = QGuiApplication::primaryScreen();
    if (primary && screens.removeOne(primary))
        screens.prepend(primary);
    return screens;
}

} // namespace

Geometry::Flip Platform::desktopFlip()
{
    const QScreen* primary = QGuiApplication::primaryScreen();
    return Geometry::Flip(primary ? topLeftRect(primary->geometry()) : Geometry::TopLeftRect{});
}

std::vector<Platform::Screen> Platform::screens()
{
    std::vector<Screen> result;
    const Geometry::Flip flip = desktopFlip();
    for (QScreen* screen : primaryFirst()) {
        result.push_back({
            .name = screen->name(),
            .frame = flip.bottomLeftFromTopLeft(topLeftRect(screen->geometry())),
            .visibleFrame = flip.bottomLeftFromTopLeft(topLeftRect(visibleGeometry(*screen))),
            .scale = screen->devicePixelRatio(),
            .handle = screen,
        });
    }
    return result;
}

Geometry::Point Platform::mouseLocation()
{
    const QPointF p = QCursor::pos();
    return desktopFlip().bottomLeftFromTopLeft(Geometry::TopLeftPoint{p.x(), p.y()});
}
