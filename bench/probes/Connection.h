#pragma once

#include <chrono>
#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace Bench {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

/// A reply, an event or an error; xcb allocates it, its reader frees it.
template <class Struct>
using Owned = std::unique_ptr<Struct, Free>;

using Clock = std::chrono::steady_clock;

/// How long a probe waits for anything before it says that it did not happen.
inline constexpr std::chrono::seconds patience{10};

double milliseconds(Clock::duration duration);

/// A connection of the probe's own. Throws std::runtime_error when there is no display, or when
/// the server refuses or goes away.
class Connection {
public:
    Connection();

    // NOLINTNEXTLINE(google-explicit-constructor): it is the first argument of all of xcb's calls
    operator xcb_connection_t*() const { return m_connection.get(); }
    const xcb_screen_t& screen() const { return *m_screen; }
    xcb_window_t root() const { return m_screen->root; }

    xcb_atom_t atom(const char* name) const;

    /// An extension's first event, once the server was asked for it.
    std::uint8_t firstEvent(xcb_extension_t& extension) const;

    /// The next event, or none when there is none until `deadline`.
    Owned<xcb_generic_event_t> nextEvent(Clock::time_point deadline) const;

    /// The server has done all that was asked of it.
    void finish() const;

    /// A reply that must not be absent.
    template <class Reply>
    Owned<Reply> take(Reply* reply) const
    {
        if (!reply)
            failed();
        return Owned<Reply>(reply);
    }

private:
    [[noreturn]] static void failed();

    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_screen_t* m_screen; // lives inside the connection
};

} // namespace Bench
