#include "Movie/Sound/Microphone.h"

#include <chrono>
#include <utility>

#include <pulse/pulseaudio.h>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto patience = 2s; // for a server that does not answer
constexpr auto retryAfter = 1s;
constexpr int passEvery = 50; // milliseconds
constexpr int channels = 2;
constexpr std::uint32_t frameBytes = channels * sizeof(float);
constexpr std::uint32_t chunkBytes = frameBytes * (Microphone::rate / 100);
constexpr double bytesASecond = double{frameBytes} * Microphone::rate;
constexpr double longestHeld = 0.3; // seconds; what claims more is not believed
constexpr auto noLimit = static_cast<std::uint32_t>(-1);

} // namespace

void Microphone::Free::operator()(pa_mainloop* loop) const
{
    pa_mainloop_free(loop);
}

void Microphone::Free::operator()(pa_context* context) const
{
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
}

void Microphone::Free::operator()(pa_stream* stream) const
{
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
}

Microphone::Microphone(Listener listener)
    : m_listener(std::move(listener))
    , m_loop(pa_mainloop_new())
    , m_thread([this] { run(); })
{
}

Microphone::~Microphone()
{
    stop();
}

void Microphone::stop()
{
    m_isStopped = true;
    pa_mainloop_wakeup(m_loop.get());
    if (m_thread.joinable())
        m_thread.join();
}

void Microphone::run()
{
    connect();
    const auto deadline = Clock::now() + patience;
    auto next = Clock::now();
    auto retry = Clock::time_point::max();
    while (!m_isStopped && m_isThere != false) {
        // Counted in microseconds.
        if (pa_mainloop_prepare(m_loop.get(), passEvery * 1000) < 0 ||
            pa_mainloop_poll(m_loop.get()) < 0 || pa_mainloop_dispatch(m_loop.get()) < 0)
            break;
        const auto now = Clock::now();
        if (now > deadline)
            decide(false);
        if (std::exchange(m_isLost, false))
            retry = now + retryAfter;
        if (now > retry) {
            retry = Clock::time_point::max();
            connect();
        }
        if (now >= next && m_isThere != false) {
            next = now + std::chrono::milliseconds(passEvery);
            m_listener.passed();
        }
    }
    m_stream.reset();
    m_context.reset();
}

void Microphone::connect()
{
    m_stream.reset();
    m_context.reset(pa_context_new(pa_mainloop_get_api(m_loop.get()), "Tamrik"));
    pa_context_set_state_callback(m_context.get(), contextChanged, this);
    if (pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        lose();
}

void Microphone::decide(bool isThere)
{
    if (m_isThere)
        return;
    m_isThere = isThere;
    m_listener.decided(isThere);
}

void Microphone::lose()
{
    decide(false);
    m_isLost = true;
}

void Microphone::contextChanged(pa_context* context, void* self)
{
    auto& microphone = *static_cast<Microphone*>(self);
    const pa_context_state_t state = pa_context_get_state(context);
    if (state == PA_CONTEXT_READY)
        microphone.openStream();
    else if (!PA_CONTEXT_IS_GOOD(state))
        microphone.lose();
}

void Microphone::openStream()
{
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, rate, channels};
    m_stream.reset(pa_stream_new(m_context.get(), "Movie", &spec, nullptr));
    if (!m_stream) {
        lose();
        return;
    }
    pa_stream_set_state_callback(m_stream.get(), streamChanged, this);
    pa_stream_set_read_callback(m_stream.get(), canRead, this);
    const pa_buffer_attr sizes{noLimit, noLimit, noLimit, noLimit, chunkBytes};
    const auto flags =
        static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE);
    if (pa_stream_connect_record(m_stream.get(), nullptr, &sizes, flags) < 0)
        lose();
}

void Microphone::streamChanged(pa_stream* stream, void* self)
{
    auto& microphone = *static_cast<Microphone*>(self);
    const pa_stream_state_t state = pa_stream_get_state(stream);
    if (state == PA_STREAM_READY)
        microphone.decide(true);
    else if (!PA_STREAM_IS_GOOD(state))
        microphone.lose();
}

void Microphone::canRead(pa_stream*, std::size_t, void* self)
{
    static_cast<Microphone*>(self)->read();
}

/// The server's own clock for the stream is not asked: after a rest of the source it is wrong by up
/// to a second, and for seconds. When a chunk arrives, and how long the source says that it had it,
/// is right from the start.
void Microphone::read()
{
    const pa_timing_info* const timing = pa_stream_get_timing_info(m_stream.get());
    const double held = timing ? static_cast<double>(timing->source_usec) * 1e-6 : 0;
    const double sourceAge = held < longestHeld ? held : 0;
    const void* bytes = nullptr;
    std::size_t count = 0;
    while (pa_stream_peek(m_stream.get(), &bytes, &count) == 0 && count > 0) {
        const double waiting =
            static_cast<double>(pa_stream_readable_size(m_stream.get())) / bytesASecond;
        if (bytes) // else there is a hole
            m_listener.heard({static_cast<const float*>(bytes), count / sizeof(float)},
                             waiting + sourceAge);
        pa_stream_drop(m_stream.get());
    }
}
