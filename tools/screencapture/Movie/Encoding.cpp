#include "Movie/Encoding.h"

#include "Movie/Clock.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr std::size_t mostWaiting = 2; // what waits has to be encoded before a movie can end

} // namespace

Encoding::Encoding(VideoEncoder encoder, Writing& writing, const Alarm& alarm)
    : m_encoder(std::move(encoder))
    , m_writing(writing)
    , m_alarm(alarm)
    , m_queue(mostWaiting)
    , m_thread([this] { run(); })
{
}

Encoding::~Encoding()
{
    m_queue.close();
    if (m_thread.joinable())
        m_thread.join();
}

std::unique_ptr<Picture> Encoding::copyOf(const Picture& picture)
{
    std::unique_ptr<Picture> copy;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_spares.empty()) {
            copy = std::move(m_spares.back());
            m_spares.pop_back();
        }
    }
    if (!copy)
        return std::make_unique<Picture>(picture);
    *copy = picture;
    return copy;
}

void Encoding::add(std::unique_ptr<Picture> picture, double time, bool isKey)
{
    const std::int64_t ticks =
        std::max<std::int64_t>(std::llround(time * VideoEncoder::ticksASecond), m_lastTicks + 1);
    m_lastTicks = ticks;
    m_queue.push({std::move(picture), ticks, isKey});
}

std::vector<double> Encoding::takeEfforts()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_efforts, {});
}

PossibleFailure Encoding::failure() const
{
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

PossibleFailure Encoding::finish()
{
    m_queue.close();
    m_thread.join();
    return m_failure;
}

void Encoding::run()
{
    while (std::optional<Job> job = m_queue.pop()) {
        const double start = Clock::now();
        PossibleFailure failure = hand(m_encoder.encode(*job->picture, job->ticks, job->isKey));
        const std::lock_guard lock(m_mutex);
        m_efforts.push_back(Clock::now() - start);
        m_spares.push_back(std::move(job->picture));
        m_alarm.ring();
        if (failure) {
            m_failure = std::move(failure);
            m_queue.close();
            return;
        }
    }
    PossibleFailure failure = hand(m_encoder.finish());
    const std::lock_guard lock(m_mutex);
    m_failure = std::move(failure);
}

PossibleFailure Encoding::hand(Result<std::vector<Av::Packet>> packets)
{
    if (!packets)
        return packets.failure();
    for (Av::Packet& packet : *packets)
        m_writing.addVideo(std::move(packet));
    return std::nullopt;
}
