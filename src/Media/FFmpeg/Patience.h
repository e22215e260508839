#pragma once

#include "Media/Cancellation.h"
#include "Support/Result.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <utility>

/// How long a piece of work may go on, and whether something kept it from all that there is.
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

    /// Notes why some of a file could not be read, which otherwise passes for the file's end. Any
    /// thread.
    void noteUnreadable(Failure failure) const
    {
        const std::lock_guard lock(m_unreadable->mutex);
        if (!m_unreadable->first)
            m_unreadable->first = std::move(failure);
    }

    /// What was noted first. Any thread.
    PossibleFailure unreadable() const
    {
        const std::lock_guard lock(m_unreadable->mutex);
        return m_unreadable->first;
    }

private:
    struct Unreadable {
        std::mutex mutex;
        PossibleFailure first;
    };

    std::shared_ptr<Unreadable> m_unreadable = std::make_shared<Unreadable>();
    std::chrono::milliseconds m_time;
    Cancellation m_cancellation;
    std::chrono::steady_clock::time_point m_end;
};
