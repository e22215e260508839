#include "Platform/WindowTraits.h"

#include "Platform/Linux/NativeScreen.h"
#include "Platform/Linux/QtGeometry.h"
#include "Platform/Linux/X11/EventTimes.h"
#include "Platform/Linux/X11/KeyboardGrab.h"
#include "Platform/Linux/X11/QtConnection.h"

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <qpa/qplatformwindow.h>

#include <cmath>
#include <vector>

namespace {

/// The panels of the highest level, in the order they came to the front. They bypass the window
/// manager, so keeping them above lower panels is up to us.
std::vector<QPointer<QWidget>>& topmostPanels()
{
    static std::vector<QPointer<QWidget>> panels;
    return panels;
}

constexpr const char* levelProperty = "tamrikWindowLevel";

bool isTopmost(const QWidget& window)
{
    return window.property(levelProperty).toInt() ==
           static_cast<int>(Platform::WindowLevel::ScreenSaver);
}

} // namespace

void Platform::applyTraits(QWidget& window, WindowTraits traits)
{
    // Bypassing the window manager keeps a panel out of task bars and switchers, on every desktop
    // and above full-screen windows, and lets it stand exactly where it is put.
    Qt::WindowFlags flags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                            Qt::NoDropShadowWindowHint | Qt::X11BypassWindowManagerHint;
    if (traits.nonActivating) {
        flags |= Qt::WindowDoesNotAcceptFocus;
        window.setAttribute(Qt::WA_ShowWithoutActivating);
    }
    window.setWindowFlags(flags);
    window.setAttribute(Qt::WA_AlwaysShowToolTips);
    window.setAttribute(Qt::WA_TranslucentBackground, traits.translucent);
    window.setProperty(levelProperty, static_cast<int>(traits.level));
}

void Platform::coverScreen(QWidget& window, QScreen& screen)
{
    window.setScreen(&screen);
    window.setGeometry(screen.geometry());
    // Qt rounds the screen to whole points and the window from there to pixels, which under a scale
    // makes it a pixel too large or too small.
    window.winId();
    window.windowHandle()->handle()->setGeometry(NativeScreen::pixels(screen));
}

void Platform::setFrame(QWidget& window, Geometry::Rect frame)
{
    const QRectF wanted = qtRect(desktopFlip().topLeftFromBottomLeft(frame));
    const QSize size(static_cast<int>(std::ceil(wanted.width())),
                     static_cast<int>(std::ceil(wanted.height())));
    const QRect place(QPoint(static_cast<int>(std::lround(wanted.left())),
                             static_cast<int>(std::lround(wanted.bottom())) - size.height()),
                      size);
    if (QScreen* screen = QGuiApplication::screenAt(place.center()); screen)
        window.setScreen(screen);
    window.setGeometry(place);
    // Qt counts in points, of which a window that changes to a screen of another scale has as many
    // as before: Qt may not see that it has to tell the window system.
    const QScreen& screen = *window.screen();
    const double scale = screen.devicePixelRatio();
    const QPoint offset = place.topLeft() - screen.geometry().topLeft();
    window.winId();
    window.windowHandle()->handle()->setGeometry(
        {NativeScreen::pixels(screen).topLeft() + (QPointF(offset) * scale).toPoint(),
         (QSizeF(size) * scale).toSize()});
}

void Platform::setOpacity(QWidget& window, double opacity)
{
    window.setWindowOpacity(opacity);
    // Qt sets a property of the window and leaves it at that.
    if (xcb_connection_t* connection = X11::qtConnection())
        xcb_flush(connection);
}

void Platform::orderFrontRegardless(QWidget& window)
{
    auto& topmost = topmostPanels();
    std::erase_if(topmost, [&window](const auto& w) { return !w || w == &window; });
    if (isTopmost(window))
        topmost.emplace_back(&window);
    window.show();
    window.raise();
    for (const auto& panel : topmost) {
        if (!isTopmost(window) && panel->isVisible())
            panel->raise();
    }
}

void Platform::bringToFront(QWidget& window)
{
    X11::stateNewestTime();
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

void Platform::makeKey(QWidget& window)
{
    // A grab that another window of ours had would end this one when that window goes.
    static QPointer<QWidget> holder;
    if (holder)
        X11::KeyboardGrab::release(*holder);
    holder = &window;
    new X11::KeyboardGrab(window); // the window owns it
    window.setFocus();
}

void Platform::orderOut(QWidget& window)
{
    X11::KeyboardGrab::release(window);
    window.hide();
    if (xcb_connection_t* connection = X11::qtConnection())
        xcb_flush(connection);
}
