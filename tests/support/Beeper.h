#pragma once

#include "support/SoundServer.h"

#include <chrono>
#include <future>
#include <mutex>
#include <optional>
#include <thread>

/// Keeps a sound server playing, silence mostly, on a thread of its own.
class Beeper {
public:
    using Instant = std::chrono::steady_clock::time_point;

    explicit Beeper(const SoundServer& server);
    ~Beeper();
    Beeper(const Beeper&) = delete;
    Beeper& operator=(const Beeper&) = delete;

    /// Plays a short tone as soon as it can; the moment at which that begins to be heard, which is
    /// to come.
    Instant beep();

private:
    void run();

    SoundServer::Player m_player;
    std::mutex m_mutex;
    std::optional<std::promise<Instant>> m_wish;
    bool m_isOver = false;
    std::thread m_thread;
};
