#include "probes/Selection.h"

#include <stdexcept>

#include <xcb/xfixes.h>

namespace Bench {

Selection::Selection(const Connection& connection)
    : m_connection(connection)
    , m_window(xcb_generate_id(connection))
    , m_clipboard(connection.atom("CLIPBOARD"))
    , m_property(connection.atom("TAMRIK_BENCH"))
    , m_firstEvent(connection.firstEvent(xcb_xfixes_id))
{
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, connection.root(), -1, -1, 1, 1,
                      0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    const auto version = xcb_xfixes_query_version(connection, 5, 0);
    connection.take(xcb_xfixes_query_version_reply(connection, version, nullptr));
    xcb_xfixes_select_selection_input(connection, m_window, m_clipboard,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    connection.finish();
}

template <class Event, class Matches>
Owned<Event> Selection::await(std::uint8_t type, const char* what, Matches matches)
{
    const auto deadline = Clock::now() + patience;
    while (Owned<xcb_generic_event_t> event = m_connection.nextEvent(deadline)) {
        if ((event->response_type & 0x7f) != type)
            continue;
        Owned<Event> wanted(static_cast<Event*>(static_cast<void*>(event.release())));
        if (matches(*wanted))
            return wanted;
    }
    throw std::runtime_error(std::string("waited in vain for ") + what);
}

Clock::time_point Selection::awaitNewOwner()
{
    await<xcb_xfixes_selection_notify_event_t>(
        static_cast<std::uint8_t>(m_firstEvent + XCB_XFIXES_SELECTION_NOTIFY),
        "a new owner of the clipboard",
        [](const auto& event) { return event.owner != XCB_WINDOW_NONE; });
    return Clock::now();
}

std::vector<std::uint8_t> Selection::takeProperty(xcb_atom_t& type)
{
    constexpr std::uint32_t everything = 0x1fffffff; // 32-bit words
    const auto cookie =
        xcb_get_property(m_connection, 1, m_window, m_property, XCB_ATOM_ANY, 0, everything);
    const auto reply = m_connection.take(xcb_get_property_reply(m_connection, cookie, nullptr));
    type = reply->type;
    const auto* const bytes = static_cast<const std::uint8_t*>(xcb_get_property_value(reply.get()));
    return {bytes, bytes + xcb_get_property_value_length(reply.get())};
}

std::vector<std::uint8_t> Selection::fetch(const char* target)
{
    // Both before the owner is asked: it may be quicker than we are.
    const xcb_atom_t incremental = m_connection.atom("INCR");
    const xcb_atom_t wanted = m_connection.atom(target);
    xcb_convert_selection(m_connection, m_window, m_clipboard, wanted, m_property,
                          XCB_CURRENT_TIME);
    const auto answer = await<xcb_selection_notify_event_t>(
        XCB_SELECTION_NOTIFY, "the clipboard's contents", [](const auto&) { return true; });
    if (answer->property == XCB_ATOM_NONE)
        throw std::runtime_error(std::string("the clipboard holds no ") + target);
    xcb_atom_t type = XCB_ATOM_NONE;
    std::vector<std::uint8_t> contents = takeProperty(type);
    if (type != incremental)
        return contents;

    // A large one comes in pieces (ICCCM 2.7.2), each announced as a new value of the property; an
    // empty one is the last.
    contents.clear();
    while (true) {
        await<xcb_property_notify_event_t>(
            XCB_PROPERTY_NOTIFY, "the next piece of the clipboard's contents",
            [this](const auto& event) {
                return event.atom == m_property && event.state == XCB_PROPERTY_NEW_VALUE;
            });
        const std::vector<std::uint8_t> piece = takeProperty(type);
        if (type == XCB_ATOM_NONE)
            continue; // announced before we took the one before it
        if (piece.empty())
            return contents;
        contents.insert(contents.end(), piece.begin(), piece.end());
    }
}

} // namespace Bench
