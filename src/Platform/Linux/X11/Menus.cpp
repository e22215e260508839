#include "Platform/Menus.h"

#include "Platform/Linux/X11/QtConnection.h"

#include <QCursor>
#include <QMenu>
#include <QTimer>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto retryInterval = 20ms;
constexpr int attempts = 100;

/// Whether no other program holds the keyboard or the pointer. A menu that opens while one does
/// gets neither, and then does not even close when the user clicks elsewhere.
bool inputIsFree()
{
    xcb_connection_t* connection = X11::qtConnection();
    if (!connection)
        return true;
    constexpr auto async = XCB_GRAB_MODE_ASYNC;
    const xcb_window_t root = X11::qtScreen().root;
    const auto keyboardCookie =
        xcb_grab_keyboard(connection, 0, root, XCB_CURRENT_TIME, async, async);
    const auto pointerCookie = xcb_grab_pointer(connection, 0, root, 0, async, async, XCB_NONE,
                                                XCB_NONE, XCB_CURRENT_TIME);
    const X11::Reply<xcb_grab_keyboard_reply_t> keyboard(
        xcb_grab_keyboard_reply(connection, keyboardCookie, nullptr));
    const X11::Reply<xcb_grab_pointer_reply_t> pointer(
        xcb_grab_pointer_reply(connection, pointerCookie, nullptr));
    xcb_ungrab_keyboard(connection, XCB_CURRENT_TIME);
    xcb_ungrab_pointer(connection, XCB_CURRENT_TIME);
    return keyboard && keyboard->status == XCB_GRAB_STATUS_SUCCESS && pointer &&
           pointer->status == XCB_GRAB_STATUS_SUCCESS;
}

constexpr const char* waitingName = "tamrikMenuWaits";

} // namespace

void Platform::popUpAtPointer(QMenu& menu)
{
    const QString name = QString::fromLatin1(waitingName);
    if (menu.isVisible() || menu.findChild<QTimer*>(name, Qt::FindDirectChildrenOnly))
        return;
    if (inputIsFree()) {
        menu.popup(QCursor::pos());
        return;
    }
    auto* retry = new QTimer(&menu); // the menu owns it
    retry->setObjectName(name);
    QObject::connect(retry, &QTimer::timeout, &menu, [&menu, retry, left = attempts]() mutable {
        if (--left > 0 && !inputIsFree())
            return;
        retry->stop();
        retry->deleteLater();
        menu.popup(QCursor::pos());
    });
    retry->start(retryInterval);
}
