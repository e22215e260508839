#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace X11 {

/// What we know of the X server's clock: milliseconds in 32 bits, which start anew every 49 days.
class ServerClock {
public:
    using Instant = std::chrono::steady_clock::time_point;

    /// The server stamped something with `time`, which arrived at `now`.
    void note(std::uint32_t time, Instant now);

    /// Whether `time` may be one of the server's up to `now`: it is not later than the server's
    /// clock can be by then. True as long as nothing was noted.
    bool isPossible(std::uint32_t time, Instant now) const;

    /// The newest time noted.
    std::optional<std::uint32_t> time() const
    {
        return m_last ? std::optional(m_last->time) : std::nullopt;
    }

private:
    struct Reading {
        std::uint32_t time;
        Instant instant;
    };
    std::optional<Reading> m_last;
};

} // namespace X11
