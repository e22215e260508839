#pragma once

#include "Editor/FrameGrid.h"

/// A range of a film that is being chosen by two handles. It begins and ends where frames do, holds
/// at least one, and the handles never pass each other.
class TrimModel {
public:
    enum class Handle { start, end };

    explicit TrimModel(FrameGrid frames);
    /// `range` is moved to the nearest beginnings of frames.

    const FrameGrid& frames() const { return m_frames; }
    FilmRange range() const;
    bool isWhole() const { return m_start == 0 && m_end == m_frames.count(); }

    double time(Handle handle) const;

    /// When the frame under a handle begins: of the start's the first frame of the range, of the
    /// end's the last.
    double shownTime(Handle handle) const;

    /// To where a frame begins that is nearest to `seconds`, as far as the other handle lets it.
    void move(Handle handle, double seconds);
    void step(Handle handle, int frames);

    /// Other frames are known now; the range stays as near as may be.
    void setFrames(FrameGrid frames);

private:
    void put(Handle handle, int frame);

    FrameGrid m_frames;
    int m_start = 0;
    int m_end; // the number of the frame after the last one
};

/// Where the times of a film lie on a line of a width.
struct FilmLine {
    double duration = 0; ///< Seconds; a film without any lies at the beginning.
    double left = 0;
    double width = 0;

    double x(double seconds) const;
    double seconds(double at) const;
};
