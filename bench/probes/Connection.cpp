#include "probes/Connection.h"

#include <cstring>
#include <stdexcept>

#include <poll.h>

namespace Bench {

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

Connection::Connection()
{
    int number = 0;
    m_connection.reset(xcb_connect(nullptr, &number));
    if (xcb_connection_has_error(m_connection.get()))
        throw std::runtime_error("no X server at the display of this environment");
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get()));
    for (; number > 0 && screens.rem; --number)
        xcb_screen_next(&screens);
    m_screen = screens.data;
}

void Connection::failed()
{
    throw std::runtime_error("the X server refused a request, or is gone");
}

xcb_atom_t Connection::atom(const char* name) const
{
    const auto length = static_cast<std::uint16_t>(std::strlen(name));
    const auto cookie = xcb_intern_atom(*this, 0, length, name);
    return take(xcb_intern_atom_reply(*this, cookie, nullptr))->atom;
}

std::uint8_t Connection::firstEvent(xcb_extension_t& extension) const
{
    const xcb_query_extension_reply_t* const data = xcb_get_extension_data(*this, &extension);
    if (!data || !data->present)
        throw std::runtime_error("the X server lacks an extension");
    return data->first_event;
}

Owned<xcb_generic_event_t> Connection::nextEvent(Clock::time_point deadline) const
{
    xcb_flush(*this);
    while (true) {
        if (Owned<xcb_generic_event_t> event{xcb_poll_for_event(*this)})
            return event;
        if (xcb_connection_has_error(*this))
            failed();
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return nullptr;
        pollfd waited{xcb_get_file_descriptor(*this), POLLIN, 0};
        poll(&waited, 1, static_cast<int>(left));
    }
}

void Connection::finish() const
{
    take(xcb_get_input_focus_reply(*this, xcb_get_input_focus(*this), nullptr));
}

} // namespace Bench
