#include "desktop/harness/Grab.h"

#include "desktop/harness/Server.h"
#include "desktop/harness/VirtualDesktop.h"

#include <xcb/xcb.h>

namespace Desktop {
namespace {

/// The server's answer to asking for a device; nothing when it gave none.
std::optional<std::uint8_t> ask(const Server& server, Grab::Device device)
{
    xcb_connection_t* connection = server.connection();
    switch (device) {
    case Grab::Device::Keyboard: {
        const auto cookie = xcb_grab_keyboard(connection, 0, server.root(), XCB_CURRENT_TIME,
                                              XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const Reply<xcb_grab_keyboard_reply_t> reply(
            xcb_grab_keyboard_reply(connection, cookie, nullptr));
        return reply ? std::optional(reply->status) : std::nullopt;
    }
    case Grab::Device::Pointer: {
        const auto cookie = xcb_grab_pointer(
            connection, 0, server.root(), XCB_EVENT_MASK_BUTTON_PRESS, XCB_GRAB_MODE_ASYNC,
            XCB_GRAB_MODE_ASYNC, XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME);
        const Reply<xcb_grab_pointer_reply_t> reply(
            xcb_grab_pointer_reply(connection, cookie, nullptr));
        return reply ? std::optional(reply->status) : std::nullopt;
    }
    }
    return std::nullopt;
}

std::uint8_t pressEvent(Grab::Device device)
{
    switch (device) {
    case Grab::Device::Keyboard:
        return XCB_KEY_PRESS;
    case Grab::Device::Pointer:
        return XCB_BUTTON_PRESS;
    }
    return 0;
}

} // namespace

Grab::Grab(const VirtualDesktop& desktop, Device device)
    : m_desktop(desktop)
    , m_device(device)
{
}

Grab::~Grab()
{
    release();
}

Outcome<std::unique_ptr<Grab>> Grab::take(const VirtualDesktop& desktop, Device device)
{
    // Whoever had it may be about to let go.
    const auto taken = waitFor(QStringLiteral("a grab"), [&]() -> Outcome<void> {
        const auto status = ask(desktop.server(), device);
        if (!status)
            return Failure{QStringLiteral("the server did not answer")};
        if (*status != XCB_GRAB_STATUS_SUCCESS)
            return Failure{QStringLiteral("status %1").arg(*status)};
        return {};
    });
    if (!taken)
        return taken.failure();
    return std::unique_ptr<Grab>(new Grab(desktop, device));
}

void Grab::release()
{
    if (!m_held)
        return;
    m_held = false;
    xcb_connection_t* connection = m_desktop.server().connection();
    switch (m_device) {
    case Device::Keyboard:
        xcb_ungrab_keyboard(connection, XCB_CURRENT_TIME);
        break;
    case Device::Pointer:
        xcb_ungrab_pointer(connection, XCB_CURRENT_TIME);
        break;
    }
    // It is released when the server has answered the next question.
    const Reply<xcb_get_input_focus_reply_t> answer(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

Outcome<void> Grab::awaitPress(int keyOrButton, std::chrono::milliseconds deadline) const
{
    return waitUntil(
        QStringLiteral("the holder of the grab to be told of %1").arg(keyOrButton),
        [&] {
            while (const Reply<xcb_generic_event_t> event{
                xcb_poll_for_event(m_desktop.server().connection())}) {
                if (event->response_type != pressEvent(m_device))
                    continue;
                // Both kinds of event name the key or button in their second byte.
                if (reinterpret_cast<const xcb_key_press_event_t*>(event.get())->detail ==
                    keyOrButton)
                    return true;
            }
            return false;
        },
        deadline);
}

} // namespace Desktop
