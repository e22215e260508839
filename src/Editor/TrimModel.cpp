#include "Editor/TrimModel.h"

#include <QtGlobal>

#include <algorithm>
#include <utility>

TrimModel::TrimModel(FrameGrid frames)
    : m_frames(std::move(frames))
    , m_end(m_frames.count())
{
}

FilmRange TrimModel::range() const
{
    return {m_frames.startOf(m_start), m_frames.startOf(m_end)};
}

double TrimModel::time(Handle handle) const
{
    switch (handle) {
    case Handle::start:
        return range().start;
    case Handle::end:
        return range().end;
    }
    Q_UNREACHABLE();
}

double TrimModel::shownTime(Handle handle) const
{
    switch (handle) {
    case Handle::start:
        return m_frames.startOf(m_start);
    case Handle::end:
        return m_frames.startOf(m_end - 1);
    }
    Q_UNREACHABLE();
}

void TrimModel::move(Handle handle, double seconds)
{
    put(handle, m_frames.nearest(seconds));
}

void TrimModel::step(Handle handle, int frames)
{
    put(handle, (handle == Handle::start ? m_start : m_end) + frames);
}

void TrimModel::put(Handle handle, int frame)
{
    switch (handle) {
    case Handle::start:
        m_start = std::clamp(frame, 0, m_end - 1);
        return;
    case Handle::end:
        m_end = std::clamp(frame, m_start + 1, m_frames.count());
        return;
    }
}

void TrimModel::setFrames(FrameGrid frames)
{
    const bool reachesEnd = m_end == m_frames.count();
    const FilmRange before = range();
    *this = TrimModel(std::move(frames));
    if (!reachesEnd)
        move(Handle::end, before.end);
    move(Handle::start, before.start);
}

double FilmLine::x(double seconds) const
{
    return duration > 0 ? left + width * std::clamp(seconds / duration, 0.0, 1.0) : left;
}

double FilmLine::seconds(double at) const
{
    return width > 0 ? duration * std::clamp((at - left) / width, 0.0, 1.0) : 0;
}
