#pragma once

#include "Support/Geometry.h"

#include <QUrl>

#include <functional>

/// What the recorder is doing.
enum class RecordingState {
    idle,       ///< no recording is under way
    recording,  ///< a segment is running
    pausing,    ///< the running segment was told to end, for a pause
    paused,     ///< no segment is running; the recording goes on later
    stopping,   ///< the running segment was told to end, for good
    restarting, ///< the running segment was told to end, to begin afresh
};

/// One recording that somebody asks for.
struct RecordingSession {
    /// In global points.
    Geometry::Rect rect;
    /// Whether the default microphone is recorded.
    bool micEnabled = false;
    /// Whether mouse clicks are drawn into the picture.
    bool showClicks = false;
    /// The MP4 to produce.
    QUrl finalURL;
    /// Whether whoever asked makes a GIF of it afterwards; for a recording that is interrupted.
    bool asGIF = false;
    /// Called once, when the first segment is running. Main thread.
    std::function<void()> started;
    /// Called once with the finished file, or with an empty URL when there is none. Main thread.
    std::function<void(const QUrl& file)> completion;
};
