#pragma once

#include "Media/Cancellation.h"

#include <chrono>
#include <utility>

/// How long a piece of work may go on.
class Patience {
public:
    Patience(std::chrono::milliseconds time, Cancellation cancellation)
        : m_time(time)
        , m_cancellation(std::move(cancellation))
    {
    }

    /// A new piece of work: the time runs from now.
    void begin() { m_end = std::chrono::steady_clock::now() + m_time; }

    bool isOver() const
    {
        return m_cancellation.isCancelled() || std::chrono::steady_clock::now() >= m_end;
    }

private:
    std::chrono::milliseconds m_time;
    Cancellation m_cancellation;
    std::chrono::steady_clock::time_point m_end;
};
