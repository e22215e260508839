#include "Movie/Core/Pace.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double keyDistance = 0.96;   // below a second, with room for a late heartbeat
constexpr double keySlack = 0.02;      // a frame that is this near counts as due
constexpr double secondFrame = 0.1;    // the first one gets to disk with it
constexpr double smoothing = 1.0 / 8;  // one slow key frame does not change the rate
constexpr double reserve = 1.1;        // of time a frame, against a queue that fills
constexpr double returnReserve = 1.35; // more of it before going back to a faster rate
constexpr double patience = 1;         // and that long, in seconds

} // namespace

double Pace::latest() const
{
    if (m_frames == 0)
        return 0;
    if (m_frames == 1)
        return m_lastFrame + secondFrame;
    return std::min(m_lastFrame + heartbeat, m_lastKey + keyDistance);
}

bool Pace::isKeyDue(double time) const
{
    // The frame after this one may come as late as an interval from now.
    return m_frames == 0 || time + std::min(interval(), keySlack) >= m_lastKey + keyDistance;
}

void Pace::lookedAt(double time)
{
    // The beat goes on evenly; after a rest it starts anew.
    const bool isInBeat = time - m_earliest < interval();
    m_earliest = (isInBeat ? m_earliest : time) + interval();
}

void Pace::tookFrame(double time, bool isKey)
{
    lookedAt(time);
    ++m_frames;
    m_lastFrame = time;
    if (isKey)
        m_lastKey = time;
}

void Pace::encoded(double time, double seconds)
{
    m_effort += (seconds - m_effort) * smoothing;
    const int mostSteps = static_cast<int>(std::lround(slowest / fastest));
    const int needed =
        std::clamp(static_cast<int>(std::ceil(m_effort * reserve / fastest)), 1, mostSteps);
    const int neededToReturn =
        std::clamp(static_cast<int>(std::ceil(m_effort * returnReserve / fastest)), 1, mostSteps);
    if (needed > m_steps) {
        m_steps = needed;
        m_lastChange = time;
    } else if (neededToReturn < m_steps && time - m_lastChange >= patience) {
        m_steps = neededToReturn;
        m_lastChange = time;
    }
}
