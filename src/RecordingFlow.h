#pragma once

#include "Subsystems.h"
#include "Support/Clock.h"
#include "Support/Geometry.h"

#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

class Preferences;

/// What the program does around a recording: starts it with the user's choices, shows its controls
/// while it runs, and delivers its file. Main thread only.
class RecordingFlow : public QObject {
public:
    struct Outside {
        /// Shows in the menu and the status item whether a recording runs.
        std::function<void(bool recording)> setRecording;
        /// Hands a finished file to the user.
        std::function<void(const QUrl& file)> deliver;
    };

    /// `preferences` and `subsystems` are borrowed and outlive the flow.
    RecordingFlow(Preferences& preferences, Clock clock, const Subsystems& subsystems,
                  Outside outside);

    /// Whether no recording is under way.
    bool isIdle() const;

    /// Ends the recording and keeps its file.
    void stop();

    /// Begins to record `rect` (global points). `asGIF` recordings carry no sound and are converted
    /// at the end; the video stays beside the GIF, and is delivered in its place when the
    /// conversion fails.
    void start(Geometry::Rect rect, bool asGIF);

    /// Delivers the recordings that an earlier run of the program could not finish.
    void recover();

    bool hasControls() const { return m_controls != nullptr; }

private:
    void started(Geometry::Rect rect);
    void finished(const QUrl& file, bool asGIF);
    /// Delivers a file that was recorded, or the GIF that is made of it.
    void handOver(const QUrl& file, bool asGIF);
    void showControls(Geometry::Rect near);
    void closeControls();
    Subsystems::RecordingControlsCallbacks controlsCallbacks();

    Preferences& m_preferences;
    Clock m_clock;
    const Subsystems& m_subsystems;
    Outside m_outside;
    std::shared_ptr<Subsystems::Panel> m_controls;
};
