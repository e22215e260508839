#include "Platform/Linux/X11/ServerClock.h"

using namespace std::chrono_literals;

namespace {

/// Two clocks do not run quite alike, and events take their time to arrive.
constexpr std::chrono::milliseconds tolerance = 1min;

} // namespace

void X11::ServerClock::note(std::uint32_t time, Instant now)
{
    m_last = Reading{time, now};
}

bool X11::ServerClock::isPossible(std::uint32_t time, Instant now) const
{
    if (!m_last)
        return true;
    const auto passed =
        std::chrono::duration_cast<std::chrono::milliseconds>(now - m_last->instant) + tolerance;
    const auto latest = m_last->time + static_cast<std::uint32_t>(passed.count());
    // Of two times the one is later that the shorter way around the clock leads to.
    constexpr std::uint32_t half = 1U << 31U;
    return latest - time < half;
}
