#include "Platform/Linux/X11/Connection.h"

#include <cstdlib>

#include <sys/socket.h>
#include <xcb/randr.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

namespace X11 {

void Disconnect::operator()(xcb_connection_t* connection) const
{
    xcb_disconnect(connection);
}

Connection::Connection(std::unique_ptr<xcb_connection_t, Disconnect> connection,
                       xcb_screen_t* screen)
    : m_connection(std::move(connection))
    , m_screen(screen)
{
}

Result<Connection> Connection::open()
{
    const char* const name = std::getenv("DISPLAY");
    if (!name || !*name)
        return Failure{"cannot open display: DISPLAY is not set"};

    int screenNumber = 0;
    // xcb_connect never returns null; what it returns wants disconnecting even when it failed.
    std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(name, &screenNumber));
    if (xcb_connection_has_error(connection.get()))
        return Failure{std::string("cannot open display \"") + name + '"'};

    // Asked for together, since each question by itself costs a round trip.
    xcb_prefetch_extension_data(connection.get(), &xcb_shm_id);
    xcb_prefetch_extension_data(connection.get(), &xcb_randr_id);

    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    while (screens.rem > 1 && screenNumber-- > 0)
        xcb_screen_next(&screens);
    return Connection(std::move(connection), screens.data);
}

bool Connection::carriesDescriptors() const
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    const int socket = xcb_get_file_descriptor(m_connection.get());
    void* const storage = &address;
    return getsockname(socket, static_cast<sockaddr*>(storage), &length) == 0 &&
           address.ss_family == AF_UNIX;
}

Failure Connection::lostOr(const char* refusal) const
{
    if (xcb_connection_has_error(m_connection.get()))
        return Failure{"lost the connection to the X server"};
    return Failure{refusal};
}

} // namespace X11
