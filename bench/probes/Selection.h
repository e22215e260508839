#pragma once

#include "probes/Connection.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Bench {

/// The clipboard, as a program sees it that somebody pastes into.
class Selection {
public:
    explicit Selection(const Connection& connection);

    /// Waits for the next change of owner; returns the moment when it was heard of. Throws
    /// std::runtime_error when none comes.
    Clock::time_point awaitNewOwner();

    /// What the owner gives for `target`, a MIME type. Throws std::runtime_error when it gives
    /// nothing.
    std::vector<std::uint8_t> fetch(const char* target);

private:
    std::vector<std::uint8_t> takeProperty(xcb_atom_t& type);
    template <class Event, class Matches>
    Owned<Event> await(std::uint8_t type, const char* what, Matches matches);

    const Connection& m_connection;
    xcb_window_t m_window;
    xcb_atom_t m_clipboard;
    xcb_atom_t m_property;
    std::uint8_t m_firstEvent;
};

} // namespace Bench
