#include "Movie/Filming.h"

#include "Movie/Clock.h"

#include <algorithm>
#include <cmath>

#include <poll.h>

namespace {

/// A pointer that a program puts elsewhere says nothing; it is looked for this often, in seconds.
constexpr double pointerPatience = 0.05;

/// Waits until one of the descriptors is readable, or for some seconds. Negative descriptors count
/// for nothing.
void waitFor(std::initializer_list<int> descriptors, double seconds)
{
    std::vector<pollfd> wanted;
    for (const int descriptor : descriptors)
        wanted.push_back({descriptor, POLLIN, 0});
    const double whole = std::floor(seconds);
    const timespec limit{static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
    ppoll(wanted.data(), wanted.size(), &limit, nullptr);
}

} // namespace

Filming::Filming(const Parts& parts, double start)
    : m_parts(parts)
    , m_start(start)
{
}

double Filming::time() const
{
    return Clock::now() - m_start;
}

PossibleFailure Filming::run()
{
    do {
        m_parts.alarm.clear(); // before anything is looked at that may make it ring
        if (PossibleFailure failure = m_parts.writing.failure())
            return failure;
        if (PossibleFailure failure = m_parts.encoding.failure())
            return failure;
        if (PossibleFailure failure = m_parts.source.listen())
            return failure;
        const double now = time();
        for (const double effort : m_parts.encoding.takeEfforts())
            m_pace.encoded(now, effort);
        if (!isDue(now))
            wait(now);
        else if (PossibleFailure failure = lookAndSend(now))
            return failure;
    } while (!isOver());
    return std::nullopt;
}

bool Filming::isOver() const
{
    return m_parts.signals.take() != 0 || m_parts.parent.isGone();
}

bool Filming::isDue(double now) const
{
    if (!m_parts.encoding.hasRoom())
        return false;
    return now >= m_pace.latest() || (now >= m_pace.earliest() && hasNews(now));
}

bool Filming::hasNews(double now) const
{
    if (m_parts.source.hasScreenNews() || isWholeDue(now))
        return true;
    if (!m_parts.overlay.followsPointer())
        return false;
    return m_parts.source.hasPointerNews() || m_parts.overlay.isMoving() ||
           now >= m_lastPointer + pointerPatience;
}

bool Filming::isWholeDue(double now) const
{
    return m_lastWhole < 0 || now >= m_lastWhole + Pace::heartbeat;
}

PossibleFailure Filming::lookAndSend(double now)
{
    const bool isBeat = now >= m_pace.latest();
    const Result<ScreenSource::Look> look = m_parts.source.look(isWholeDue(now));
    if (!look)
        return look.failure();
    m_lastPointer = now;
    if (look->wasWhole)
        m_lastWhole = now;
    const bool isOverlayChanged =
        m_parts.overlay.update(look->pointer, now, m_parts.source.picture());
    if (!isBeat && !look->isChanged && !isOverlayChanged) {
        m_pace.lookedAt(now);
        return std::nullopt;
    }
    const bool isKey = m_pace.isKeyDue(now);
    std::unique_ptr<Picture> picture = m_parts.encoding.copyOf(m_parts.source.picture());
    m_parts.overlay.drawOn(*picture);
    m_parts.encoding.add(std::move(picture), now, isKey);
    m_pace.tookFrame(now, isKey);
    return std::nullopt;
}

void Filming::wait(double now) const
{
    const int signals = m_parts.signals.descriptor();
    const int parent = m_parts.parent.descriptor();
    const int alarm = m_parts.alarm.descriptor();
    const double beat = std::max(m_pace.latest() - now, 0.0);
    if (!m_parts.encoding.hasRoom()) {
        waitFor({signals, parent, alarm}, 1);
        return;
    }
    // Before the next frame may come, more news from the server would only wake us for nothing.
    if (now < m_pace.earliest() && hasNews(now)) {
        waitFor({signals, parent, alarm}, std::min(m_pace.earliest() - now, beat));
        return;
    }
    double limit = std::min(beat, std::max(m_lastWhole + Pace::heartbeat - now, 0.0));
    if (m_parts.overlay.followsPointer())
        limit = std::min(limit, std::max(m_lastPointer + pointerPatience - now, 0.0));
    waitFor({signals, parent, alarm, m_parts.source.descriptor()}, limit);
}
