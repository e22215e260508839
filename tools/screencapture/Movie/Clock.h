#pragma once

#include <chrono>

namespace Clock {

/// Seconds on the monotonic clock.
inline double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace Clock
