#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <thread>

struct pa_context;
struct pa_mainloop;
struct pa_stream;

/// The sound server's default source (PulseAudio, or PipeWire in its place), in a thread of its
/// own. One that goes away is looked for again until it is back.
class Microphone {
public:
    static constexpr int rate = 48000; // interleaved stereo

    /// All are called in the microphone's thread.
    struct Listener {
        /// Once, before anything else: whether there is a microphone. Not when it was stopped
        /// before that was known.
        std::function<void(bool isThere)> decided;
        /// Sound, and how many seconds ago its first frame was to be heard.
        std::function<void(std::span<const float> chunk, double age)> heard;
        /// Twenty times a second while there is a microphone, and also after it has gone away.
        std::function<void()> passed;
    };

    explicit Microphone(Listener listener);
    ~Microphone();
    Microphone(const Microphone&) = delete;
    Microphone& operator=(const Microphone&) = delete;

    /// Nothing is called any more afterwards.
    void stop();

private:
    struct Free {
        void operator()(pa_mainloop* loop) const;
        void operator()(pa_context* context) const;
        void operator()(pa_stream* stream) const;
    };

    void run();
    void connect();
    void decide(bool isThere);
    /// The source or its server is not there, or not any more.
    void lose();
    void openStream();
    void read();
    static void contextChanged(pa_context* context, void* self);
    static void streamChanged(pa_stream* stream, void* self);
    static void canRead(pa_stream* stream, std::size_t bytes, void* self);

    Listener m_listener;
    std::optional<bool> m_isThere; // when that is decided
    bool m_isLost = false;
    std::unique_ptr<pa_mainloop, Free> m_loop;
    std::unique_ptr<pa_context, Free> m_context;
    std::unique_ptr<pa_stream, Free> m_stream;
    std::atomic<bool> m_isStopped = false;
    std::thread m_thread; // last: it uses all of the above
};
