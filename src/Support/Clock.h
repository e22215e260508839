#pragma once

#include <QDateTime>

#include <chrono>
#include <functional>

/// What the program knows of time. Tests pass one that they move by hand.
struct Clock {
    /// The local date and time.
    std::function<QDateTime()> now;
    /// Runs `work` once on the main thread, no sooner than `delay` from now and never before this
    /// call has returned.
    std::function<void(std::chrono::milliseconds delay, std::function<void()> work)> after;

    /// The machine's clock and the event loop's timers.
    static Clock system();
};
