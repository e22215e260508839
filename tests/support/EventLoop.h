#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

/// Runs the event loop until `done()` holds; false when that takes longer than ten seconds.
template <typename Condition>
[[nodiscard]] bool runUntil(Condition done)
{
    const QDeadlineTimer deadline(10'000);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    }
    return true;
}

/// Delivers everything that waits in the event loop, deferred deletions too.
inline void settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}
