#include "Platform/Screens.h"

#include "Platform/Linux/NativeScreen.h"
#include "Platform/Linux/QtGeometry.h"
#include "Platform/Linux/X11/Struts.h"
#include "Support/ScreenTable.h"

#include <QCursor>
#include <QGuiApplication>
#include <qpa/qplatformcursor.h>
#include <qpa/qplatformscreen.h>

namespace {

/// The screen less panels. QScreen::availableGeometry ignores panels when there are several
/// screens.
QRectF visibleGeometry(const QScreen& screen, const X11::Reserved& reserved)
{
    const QRect native = NativeScreen::pixels(screen);
    const QRect visible = X11::withoutStruts(native, reserved.root, reserved.struts);
    if (visible == native)
        return screen.geometry();
    return NativeScreen::logical(screen, visible) & QRectF(screen.geometry());
}

} // namespace

std::vector<Platform::Screen> Platform::screens()
{
    std::vector<Screen> result;
    const Geometry::Flip flip = desktopFlip();
    const X11::Reserved reserved = X11::reserved();
    const QList<QScreen*> all = NativeScreen::primaryFirst();
    for (QScreen* screen : all) {
        result.push_back({
            .name = screen->name(),
            .frame = flip.bottomLeftFromTopLeft(topLeftRect(screen->geometry())),
            .visibleFrame =
                flip.bottomLeftFromTopLeft(topLeftRect(visibleGeometry(*screen, reserved))),
            .scale = screen->devicePixelRatio(),
            .handle = screen,
        });
    }
    return result;
}

Geometry::Point Platform::mouseLocation()
{
    // QCursor::pos() rounds to whole points, which on a scaled screen's last pixel is off the
    // screen.
    QPointF p = QCursor::pos();
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QPlatformCursor* cursor = screen->handle()->cursor();
        const QPoint native = cursor ? cursor->pos() : QPoint();
        if (cursor && NativeScreen::pixels(*screen).contains(native)) {
            p = NativeScreen::logical(*screen, QRect(native, QSize(1, 1))).topLeft();
            break;
        }
    }
    return desktopFlip().bottomLeftFromTopLeft(Geometry::TopLeftPoint{p.x(), p.y()});
}

Geometry::Rect Platform::nameable(Geometry::Rect rect, const QScreen* screen)
{
    const auto table = NativeScreen::table();
    const auto index = NativeScreen::primaryFirst().indexOf(screen);
    if (index < 0)
        return rect;
    // The table's points count from the top left of the primary screen.
    const Geometry::TopLeftRect& primary = table.front().frame;
    const Geometry::Flip flip({0, 0, primary.width, primary.height});
    return flip.bottomLeftFromTopLeft(ScreenTable::placeable(
        flip.topLeftFromBottomLeft(rect), table[static_cast<std::size_t>(index)], table));
}
