#pragma once

#include "desktop/harness/Outcome.h"

#include <chrono>
#include <thread>
#include <utility>

namespace Desktop {

/// How long anything on a desktop may take: long enough for two busy cores under a sanitizer.
inline constexpr std::chrono::milliseconds patience = std::chrono::seconds(10);

inline Failure gaveUp(const QString& what, std::chrono::milliseconds deadline,
                      const QString& last = {})
{
    QString text = QStringLiteral("waited %1 s in vain for %2")
                       .arg(static_cast<double>(deadline.count()) / 1000)
                       .arg(what);
    if (!last.isEmpty())
        text += QStringLiteral("; at last: ") + last;
    return {text};
}

/// Asks `attempt` for its Outcome again and again until it has one, or until `deadline` is over.
/// The failure then tells what was waited for and what the last attempt said.
template <typename Attempt>
auto waitFor(const QString& what, Attempt attempt, std::chrono::milliseconds deadline = patience)
    -> decltype(attempt())
{
    constexpr std::chrono::milliseconds pause(10);
    const auto end = std::chrono::steady_clock::now() + deadline;
    for (;;) {
        auto outcome = attempt();
        if (outcome)
            return outcome;
        if (std::chrono::steady_clock::now() >= end)
            return gaveUp(what, deadline, outcome.error());
        std::this_thread::sleep_for(pause);
    }
}

/// Asks `condition` again and again until it is true, or until `deadline` is over.
template <typename Condition>
Outcome<void> waitUntil(const QString& what, Condition condition,
                        std::chrono::milliseconds deadline = patience)
{
    const auto attempt = [&]() -> Outcome<void> {
        if (condition())
            return {};
        return Failure{};
    };
    return waitFor(what, attempt, deadline);
}

} // namespace Desktop
