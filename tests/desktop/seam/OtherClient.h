#pragma once

#include "Platform/Linux/X11/Connection.h"
#include "Platform/Linux/X11/Handles.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

/// Another program on the same X server.
class OtherClient {
public:
    OtherClient()
        : m_connection(opened())
    {
    }

    /// Whether the server granted the key. Grabs end with the client.
    bool grabKey(xcb_keycode_t key, std::uint16_t modifiers)
    {
        const auto cookie = xcb_grab_key_checked(get(), 1, root(), modifiers, key,
                                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const X11::Reply<xcb_generic_error_t> error(xcb_request_check(get(), cookie));
        return !error;
    }

    bool grabKeyboard()
    {
        const auto cookie = xcb_grab_keyboard(get(), 1, root(), XCB_CURRENT_TIME,
                                              XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const X11::Reply<xcb_grab_keyboard_reply_t> reply(
            xcb_grab_keyboard_reply(get(), cookie, nullptr));
        return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }

    void ungrabKeyboard()
    {
        xcb_ungrab_keyboard(get(), XCB_CURRENT_TIME);
        roundTrip();
    }

    xcb_window_t focus()
    {
        const X11::Reply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(get(), xcb_get_input_focus(get()), nullptr));
        return reply ? reply->focus : xcb_window_t{XCB_WINDOW_NONE};
    }

    /// The windows on the root, from the lowest to the highest.
    std::vector<xcb_window_t> stacking()
    {
        const X11::Reply<xcb_query_tree_reply_t> reply(
            xcb_query_tree_reply(get(), xcb_query_tree(get(), root()), nullptr));
        if (!reply)
            return {};
        const xcb_window_t* windows = xcb_query_tree_children(reply.get());
        return {windows, windows + xcb_query_tree_children_length(reply.get())};
    }

    bool bypassesWindowManager(xcb_window_t window)
    {
        const X11::Reply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
            get(), xcb_get_window_attributes(get(), window), nullptr));
        return reply && reply->override_redirect != 0;
    }

    xcb_connection_t* get() const { return m_connection.get(); }
    xcb_window_t root() const { return m_connection.screen().root; }

private:
    static X11::Connection opened()
    {
        auto connection = X11::Connection::open();
        if (!connection)
            throw std::runtime_error(connection.failure().message);
        return std::move(*connection);
    }

    void roundTrip() { focus(); }

    X11::Connection m_connection;
};
