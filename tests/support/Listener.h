#pragma once

#include "support/SoundServer.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

/// Hears what others play on a sound server, on a thread of its own.
class Listener {
public:
    using Instant = std::chrono::steady_clock::time_point;

    /// Returns when it hears. Throws std::runtime_error when it cannot.
    explicit Listener(const SoundServer& server);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// When each of the tones up to now began, to within a few hundredths of a second. There is a
    /// tenth of a second of silence between two.
    std::vector<Instant> tones() const;

private:
    struct Stream;

    void run();
    void listenTo(float sample, Instant instant);

    std::unique_ptr<Stream> m_stream;
    mutable std::mutex m_mutex; // for the rest
    std::vector<Instant> m_tones;
    Instant m_lastLoud;
    bool m_isOver = false;
    std::thread m_thread;
};
