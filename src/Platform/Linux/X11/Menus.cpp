#include "Platform/Menus.h"

#include "Platform/Linux/X11/QtConnection.h"

#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QTimer>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto retryInterval = 20ms;
constexpr int attempts = 100;

/// Whether nobody holds the keyboard or the pointer. A menu that opens while another program does
/// gets neither, and then does not even close when the user clicks elsewhere.
bool inputIsFree()
{
    xcb_connection_t* connection = X11::qtConnection();
    if (!connection)
        return true;
    // The server would grant us what we hold already, and giving it back would end our own grab: of
    // another menu, or of a drag.
    if (QApplication::activePopupWidget() || QGuiApplication::mouseButtons() != Qt::NoButton)
        return false;
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

/// Looks again and again until the menu can open, or need not any more.
void openWhenFree(QMenu& menu, std::function<bool()> isWanted)
{
    auto* retry = new QTimer(&menu); // the menu owns it
    retry->setObjectName(QLatin1String(waitingName));
    auto look = [&menu, retry, isWanted = std::move(isWanted), left = attempts]() mutable {
        const bool isOver = menu.isVisible() || !isWanted(); // meanwhile opened in another way
        if (!isOver && --left > 0 && !inputIsFree())
            return;
        retry->stop();
        retry->deleteLater();
        if (!isOver)
            menu.popup(QCursor::pos());
    };
    QObject::connect(retry, &QTimer::timeout, &menu, std::move(look));
    retry->start(retryInterval);
}

} // namespace

void Platform::popUpAtPointer(QMenu& menu, std::function<bool()> isWanted)
{
    const bool waits =
        menu.findChild<QTimer*>(QLatin1String(waitingName), Qt::FindDirectChildrenOnly) != nullptr;
    if (menu.isVisible() || waits || !isWanted())
        return;
    if (inputIsFree())
        menu.popup(QCursor::pos());
    else
        openWhenFree(menu, std::move(isWanted));
}
