#pragma once

#include "Support/Result.h"

#include <cstdint>
#include <memory>

struct xcb_connection_t;
struct xcb_screen_t;

namespace X11 {

struct Disconnect {
    void operator()(xcb_connection_t* connection) const;
};

/// A connection to the X server and the screen that the display's name chose.
///
/// Not for use from several threads at once.
class Connection {
public:
    /// Opens the display that the environment variable DISPLAY names.
    static Result<Connection> open();

    xcb_connection_t* get() const { return m_connection.get(); }

    /// Owned by the connection.
    const xcb_screen_t& screen() const { return *m_screen; }

    /// Whether file descriptors can travel over it: only a local socket carries them, and trying it
    /// on another one breaks the connection.
    bool carriesDescriptors() const;

    /// What to say when a reply stayed away: the server is gone, or it refused what was asked.
    Failure lostOr(const char* refusal) const;

private:
    Connection(std::unique_ptr<xcb_connection_t, Disconnect> connection, xcb_screen_t* screen);

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_screen_t* m_screen; // lives inside the connection's setup block
};

} // namespace X11
