#pragma once

#include "Platform/Linux/X11/Connection.h"
#include "Platform/Linux/X11/Handles.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <stdexcept>
#include <string>
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
    std::vector<xcb_window_t> stacking() { return children(root()); }

    /// The window of a program on the screen, by the second part of its WM_CLASS; none when there
    /// is none. Windows that go while it looks are passed over.
    xcb_window_t findViewable(const std::string& className) { return findBelow(root(), className); }

    /// Gives a window the keyboard focus; false while it cannot have it.
    bool setFocus(xcb_window_t window)
    {
        const auto cookie =
            xcb_set_input_focus_checked(get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
        const X11::Reply<xcb_generic_error_t> error(xcb_request_check(get(), cookie));
        return !error;
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

    std::vector<xcb_window_t> children(xcb_window_t window)
    {
        const X11::Reply<xcb_query_tree_reply_t> reply(
            xcb_query_tree_reply(get(), xcb_query_tree(get(), window), nullptr));
        if (!reply)
            return {};
        const xcb_window_t* windows = xcb_query_tree_children(reply.get());
        return {windows, windows + xcb_query_tree_children_length(reply.get())};
    }

    bool isViewable(xcb_window_t window)
    {
        const X11::Reply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
            get(), xcb_get_window_attributes(get(), window), nullptr));
        return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    std::string className(xcb_window_t window)
    {
        const X11::Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
            get(), xcb_get_property(get(), 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 256),
            nullptr));
        if (!reply)
            return {};
        const std::string both(
            static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
        const std::size_t end = both.find('\0');
        return end == std::string::npos ? both : both.substr(end + 1, both.size() - end - 2);
    }

    xcb_window_t findBelow(xcb_window_t parent, const std::string& wanted)
    {
        for (const xcb_window_t window : children(parent)) {
            if (className(window) == wanted && isViewable(window))
                return window;
            if (const xcb_window_t found = findBelow(window, wanted))
                return found;
        }
        return XCB_WINDOW_NONE;
    }

    void roundTrip() { focus(); }

    X11::Connection m_connection;
};
