#pragma once

#include "Movie/Alarm.h"
#include "Movie/Core/Pace.h"
#include "Movie/Encoding.h"
#include "Movie/Overlay.h"
#include "Movie/ParentWatch.h"
#include "Movie/Screen/ScreenSource.h"
#include "StopSignals.h"

/// Looks at the screen again and again and gives the encoder what has changed.
class Filming {
public:
    struct Parts {
        ScreenSource& source;
        Overlay& overlay;
        Encoding& encoding;
        const Writing& writing;
        const Alarm& alarm;
        const StopSignals& signals;
        const ParentWatch& parent;
    };

    /// `start` is the movie's, on the monotonic clock.
    Filming(const Parts& parts, double start);

    /// Until somebody wants it to end, or something fails; takes one picture at least.
    PossibleFailure run();

    /// Seconds since the start.
    double time() const;

private:
    bool isOver() const;
    bool isDue(double time) const;
    bool hasNews(double time) const;
    /// Whether all of the screen has to be looked at: servers do not tell of every change.
    bool isWholeDue(double time) const;
    PossibleFailure lookAndSend(double time);
    void wait(double time) const;

    Parts m_parts;
    double m_start;
    Pace m_pace;
    double m_lastWhole = -1; // when all of the screen was looked at
    double m_lastPointer = 0;
};
