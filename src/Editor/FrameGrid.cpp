#include "Editor/FrameGrid.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double usualRate = 30, highestRate = 1000;
/// Times are rounded on their way through files and players.
constexpr double tolerance = 1e-4;

} // namespace

FrameGrid::FrameGrid(std::vector<double> frames, double duration)
    : m_frames(std::move(frames))
    , m_duration(duration)
{
    if (m_frames.empty())
        m_frames = {0};
    m_duration = std::max(m_duration, m_frames.back());
    m_frames.front() = std::min(m_frames.front(), 0.0);
}

FrameGrid FrameGrid::even(double duration, std::optional<double> frameRate)
{
    const bool isLikely = frameRate && *frameRate > 0 && *frameRate <= highestRate;
    const double rate = isLikely ? *frameRate : usualRate;
    std::vector<double> frames;
    // Of a length that was multiplied there may be a bit of a frame too much.
    const auto count =
        static_cast<std::size_t>(std::clamp(std::ceil(duration * rate - 0.01), 1.0, 5e6));
    frames.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        frames.push_back(static_cast<double>(i) / rate);
    return {std::move(frames), duration};
}

int FrameGrid::frameAt(double time) const
{
    const auto after = std::upper_bound(m_frames.begin(), m_frames.end(), time + tolerance);
    return std::max(static_cast<int>(after - m_frames.begin()) - 1, 0);
}

double FrameGrid::startOf(int frame) const
{
    if (frame >= count())
        return m_duration;
    return std::max(m_frames[static_cast<std::size_t>(std::max(frame, 0))], 0.0);
}

int FrameGrid::nearest(double time) const
{
    const int frame = frameAt(time);
    return time - startOf(frame) < startOf(frame + 1) - time ? frame : frame + 1;
}
