#include "Media/FFmpeg/Export/DecodingTimes.h"

#include <algorithm>
#include <utility>

namespace {

/// From so many it is found out. No codec has more than 16 pictures that wait for others.
constexpr std::size_t enough = 64;

/// No film is longer, and all can be counted with it.
constexpr std::int64_t longest = std::int64_t{1} << 52;

} // namespace

void DecodingTimes::put(Av::Packet picture)
{
    if (!picture) {
        m_hasAll = true;
        return;
    }
    if (picture->pts < -longest || picture->pts > longest) {
        m_failure = Failure{"the times of its pictures are out of range"};
        return;
    }
    while (!m_times.insert(picture->pts).second)
        ++picture->pts; // two within one tick, as uneven films have them
    m_pictures.push_back(std::move(picture));
}

bool DecodingTimes::knowsOrder() const
{
    return m_hasAll || m_pictures.size() >= enough;
}

void DecodingTimes::findOrder()
{
    std::size_t overtaken = 0;
    for (auto one = m_pictures.begin(); one != m_pictures.end(); ++one) {
        const auto later = std::count_if(m_pictures.begin(), one, [&](const Av::Packet& before) {
            return before->pts > (*one)->pts;
        });
        overtaken = std::max(overtaken, static_cast<std::size_t>(later));
    }
    const std::int64_t length = *m_times.rbegin() - *m_times.begin();
    m_step = std::max<std::int64_t>(length / static_cast<std::int64_t>(m_times.size()), 1);
    m_early = std::max(m_early, overtaken);
}

std::int64_t DecodingTimes::nextTime()
{
    if (m_early > 0)
        return *m_times.begin() - m_step * static_cast<std::int64_t>(m_early--);
    return m_times.extract(m_times.begin()).value();
}

Av::Packet DecodingTimes::next()
{
    if (m_failure || m_pictures.empty() || !knowsOrder())
        return nullptr;
    if (!std::exchange(m_isOrderFound, true))
        findOrder();
    Av::Packet picture = std::move(m_pictures.front());
    m_pictures.pop_front();
    picture->dts = nextTime();
    if (picture->dts > picture->pts || picture->dts <= m_last) {
        m_failure = Failure{"the order of its pictures cannot be told"};
        return nullptr;
    }
    m_last = picture->dts;
    return picture;
}
