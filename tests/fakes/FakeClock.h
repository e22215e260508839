#pragma once

#include "Support/Clock.h"

#include <algorithm>
#include <memory>
#include <vector>

/// A clock that stands still until a test moves it.
class FakeClock {
public:
    /// The clock to hand to the program. It may outlive this object.
    Clock clock() const
    {
        return {
            [state = m_state] { return state->start.addMSecs(state->elapsed.count()); },
            [state = m_state](std::chrono::milliseconds delay, std::function<void()> work) {
                state->waiting.push_back({state->elapsed + delay, std::move(work)});
            },
        };
    }

    void set(const QDateTime& now) { m_state->start = now.addMSecs(-m_state->elapsed.count()); }

    /// Moves on by `duration` and runs what falls due, in order.
    void advance(std::chrono::milliseconds duration)
    {
        m_state->elapsed += duration;
        for (;;) {
            auto& waiting = m_state->waiting;
            const auto next =
                std::min_element(waiting.begin(), waiting.end(),
                                 [](const Waiting& a, const Waiting& b) { return a.due < b.due; });
            if (next == waiting.end() || next->due > m_state->elapsed)
                return;
            const auto work = next->work;
            waiting.erase(next);
            work();
        }
    }

private:
    struct Waiting {
        std::chrono::milliseconds due;
        std::function<void()> work;
    };
    struct State {
        QDateTime start{QDate(2024, 3, 5), QTime(14, 7, 9)};
        std::chrono::milliseconds elapsed{0};
        std::vector<Waiting> waiting;
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();
};
