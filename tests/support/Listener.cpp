#include "support/Listener.h"

#include <array>
#include <cmath>
#include <stdexcept>

#include <pulse/simple.h>

using namespace std::chrono_literals;

namespace {

constexpr int rate = 48000;
constexpr std::size_t blockFrames = rate / 100;
constexpr float loud = 0.1F;
constexpr auto silenceBetween = 100ms;

} // namespace

struct Listener::Stream {
    pa_simple* handle = nullptr;
    std::array<float, blockFrames> block{};

    ~Stream()
    {
        if (handle)
            pa_simple_free(handle);
    }
    void read()
    {
        if (pa_simple_read(handle, block.data(), sizeof block, nullptr) < 0)
            throw std::runtime_error("the sound server is gone");
    }
};

Listener::Listener(const SoundServer& server)
    : m_stream(std::make_unique<Stream>())
{
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, rate, 1};
    // So that what is played passes in pieces of that size too.
    const pa_buffer_attr sizes{static_cast<std::uint32_t>(-1), static_cast<std::uint32_t>(-1),
                               static_cast<std::uint32_t>(-1), static_cast<std::uint32_t>(-1),
                               blockFrames * sizeof(float)};
    m_stream->handle = pa_simple_new(server.address().c_str(), "test", PA_STREAM_RECORD, nullptr,
                                     "listener", &spec, nullptr, &sizes, nullptr);
    if (!m_stream->handle)
        throw std::runtime_error("cannot listen");
    m_stream->read();
    m_thread = std::thread([this] { run(); });
}

Listener::~Listener()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isOver = true;
    }
    m_thread.join();
}

std::vector<Listener::Instant> Listener::tones() const
{
    const std::lock_guard lock(m_mutex);
    return m_tones;
}

void Listener::run()
{
    constexpr auto blockTime = std::chrono::duration_cast<Instant::duration>(10ms);
    for (;;) {
        m_stream->read();
        const std::chrono::microseconds waiting(pa_simple_get_latency(m_stream->handle, nullptr));
        const Instant begin = std::chrono::steady_clock::now() - waiting - blockTime;
        const std::lock_guard lock(m_mutex);
        if (m_isOver)
            return;
        for (std::size_t i = 0; i < blockFrames; ++i)
            listenTo(m_stream->block[i],
                     begin + blockTime * static_cast<long>(i) / static_cast<long>(blockFrames));
    }
}

void Listener::listenTo(float sample, Instant instant)
{
    if (std::abs(sample) < loud)
        return;
    if (m_tones.empty() || instant - m_lastLoud > silenceBetween)
        m_tones.push_back(instant);
    m_lastLoud = instant;
}
