#include "Movie/Core/SoundTimeline.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr double keptBack = 1;           // seconds
constexpr double smoothing = 1.0 / 32;   // of what the server says about time
constexpr double jump = 0.12;            // seconds; an error like this is no drift
constexpr double tolerated = 0.008;      // seconds
constexpr std::size_t framesASlip = 200; // one in so many is repeated or left out: inaudible

std::size_t framesIn(double seconds)
{
    return static_cast<std::size_t>(
        std::max<std::int64_t>(0, std::llround(seconds * SoundTimeline::rate)));
}

/// From what was said, chunk by chunk, about when the first of them was to be heard: of the later
/// half the mean, without the quarter at either end.
double settledStart(std::vector<double> said)
{
    said.erase(said.begin(), said.begin() + static_cast<std::ptrdiff_t>(said.size() / 2));
    std::sort(said.begin(), said.end());
    const auto quarter = static_cast<std::ptrdiff_t>(said.size() / 4);
    const auto first = said.begin() + quarter;
    const auto last = said.end() - quarter;
    return std::accumulate(first, last, 0.0) / static_cast<double>(last - first);
}

} // namespace

void SoundTimeline::add(std::span<const float> chunk, double time)
{
    const std::size_t frames = chunk.size() / channels;
    if (frames == 0)
        return;
    if (m_isSettled) {
        place(chunk, time - givenUpTo());
        return;
    }
    const std::size_t heldFrames = m_heldBack.size() / channels;
    m_starts.push_back(time - static_cast<double>(heldFrames) / rate);
    m_heldBack.insert(m_heldBack.end(), chunk.begin(), chunk.end());
    if (m_heldBack.size() / channels >= framesIn(keptBack))
        settle();
}

/// Puts what was kept back in its place.
void SoundTimeline::settle()
{
    if (m_isSettled || m_heldBack.empty())
        return;
    const double start = settledStart(std::move(m_starts));
    std::vector<float> sound = std::move(m_heldBack);
    m_heldBack.clear();
    m_starts.clear();
    m_isSettled = true;
    m_error = 0;
    addSilenceUpTo(start);
    const std::size_t before =
        std::min(framesIn(givenUpTo() - start), sound.size() / channels) * channels;
    m_ready.insert(m_ready.end(), sound.begin() + static_cast<std::ptrdiff_t>(before), sound.end());
    m_given += static_cast<std::int64_t>((sound.size() - before) / channels);
}

/// `error` says how much later than the end of what there is the chunk was to be heard.
void SoundTimeline::place(std::span<const float> chunk, double error)
{
    if (std::abs(error - m_error) > jump && std::abs(error) > jump) {
        // Lost or paused: silence for what is missing. What comes too early is dropped.
        m_error = 0;
        if (error > 0) {
            addSilenceUpTo(givenUpTo() + error);
        } else {
            chunk = chunk.subspan(std::min(framesIn(-error) * channels, chunk.size()));
        }
    } else {
        m_error += (error - m_error) * smoothing;
    }
    std::size_t frames = chunk.size() / channels;
    if (frames == 0)
        return;
    const std::size_t slips =
        std::abs(m_error) > tolerated ? std::max<std::size_t>(1, frames / framesASlip) : 0;
    const double slipped = static_cast<double>(slips) / rate;
    if (slips > 0 && m_error < 0 && frames > slips) {
        chunk = chunk.first((frames - slips) * channels);
        m_error += slipped;
    }
    m_ready.insert(m_ready.end(), chunk.begin(), chunk.end());
    m_given += static_cast<std::int64_t>(chunk.size() / channels);
    if (slips > 0 && m_error > 0) {
        for (std::size_t i = 0; i < slips; ++i)
            m_ready.insert(m_ready.end(), chunk.end() - channels, chunk.end());
        m_given += static_cast<std::int64_t>(slips);
        m_error -= slipped;
    }
}

void SoundTimeline::addSilenceUpTo(double time)
{
    const std::size_t frames = framesIn(time - givenUpTo());
    m_ready.insert(m_ready.end(), frames * channels, 0.0F);
    m_given += static_cast<std::int64_t>(frames);
}

void SoundTimeline::passTo(double now)
{
    // A microphone that gave some sound and then no more never fills what is kept back.
    if (!m_heldBack.empty() && m_starts.front() + keptBack + patience < now)
        settle();
    if (m_isSettled || m_heldBack.empty())
        addSilenceUpTo(now - patience);
}

void SoundTimeline::finish(double end)
{
    settle();
    addSilenceUpTo(end);
}

std::vector<float> SoundTimeline::take(std::size_t frames)
{
    const std::size_t count = frames * channels;
    if (m_ready.size() < count)
        return {};
    const auto end = m_ready.begin() + static_cast<std::ptrdiff_t>(count);
    std::vector<float> sound(m_ready.begin(), end);
    m_ready.erase(m_ready.begin(), end);
    return sound;
}
