#pragma once

#include "Platform/Linux/X11/Connection.h"
#include "Support/ScreenTable.h"

#include <cstdint>
#include <optional>
#include <vector>

/// Asks the X server what has changed on the root window (the DAMAGE extension).
class DamageTracker {
public:
    /// Absent when the server does not know.
    static std::optional<DamageTracker> create(const X11::Connection& connection);

    /// The number of the event that says that something has changed.
    int event() const { return m_event; }

    /// Asks for what has changed since the last time. What changes after the server has seen this
    /// counts for the next time, so pixels read afterwards are never older than the answer.
    /// Something else may be asked before the reply is waited for.
    unsigned ask() const;
    /// The reply, in pixels of the root window; empty also when the connection is lost.
    std::vector<ScreenTable::PixelRect> reply(unsigned question) const;

private:
    DamageTracker(const X11::Connection& connection, int event);

    const X11::Connection* m_connection;
    int m_event;
    std::uint32_t m_damage; // these two end with the connection
    std::uint32_t m_region;
};
