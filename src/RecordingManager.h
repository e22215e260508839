#pragma once

#include "RecordingFinisher.h"
#include "RecordingJournal.h"
#include "RecordingRecovery.h"
#include "RecordingTools.h"
#include "RecordingTypes.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

/// Records a rectangle of the screen to a video file, in segments: pausing ends one, resuming
/// starts the next, and at the end they become one MP4. One recording at a time. Main thread only.
///
/// What is recorded is noted in a journal beside the segments, from before the first one starts
/// until the finished file is there. A manager that goes in the middle leaves both for `recover`.
class RecordingManager : public QObject {
public:
    explicit RecordingManager(RecordingTools tools, QObject* parent = nullptr);

    /// Ends a segment that is running: asks the tool, and leaves one that needs long to itself.
    ~RecordingManager() override;

    RecordingState state() const { return m_state; }

    /// Begins `session`. While another one is under way, and without a screen, it completes at once
    /// without a file.
    void start(const RecordingSession& session);

    /// Pauses, or goes on; while a pause is still being carried out: goes on right after it.
    void togglePause();

    /// Ends the session. Once `discard` was given nothing is kept of it, whatever is said later.
    void stop(bool discard);

    /// Throws away what was recorded so far and goes on afresh, in the same session.
    void restart();

    /// Also while a pause is still being carried out.
    bool isPaused() const;

    /// Seconds recorded since the last restart, pauses not counted.
    double elapsed() const;

    using Recovered = RecordingRecovery::Recovered;

    /// Finishes what earlier runs of the program left, as far as no other one is at it.
    void recover(const Recovered& recovered);

private:
    void launchSegment();
    void segmentEnded(const QUrl& segment);
    void logErrors() const;
    void interrupt();
    void cleanupSegments();
    void beginAfresh();
    void note(const QList<QUrl>& segments);
    void noteDiscard();
    void finishSession();

    RecordingTools m_tools;
    RecordingState m_state = RecordingState::idle;
    std::optional<RecordingSession> m_session;
    std::optional<RecordingTools::Film> m_film; // while a segment runs
    QUrl m_filming;                             // its file
    QList<QUrl> m_segments;                     // finished ones, oldest first
    double m_activeAccum = 0;                   // seconds in them
    std::optional<QDateTime> m_segmentStart;
    bool m_discardOnFinish = false;
    bool m_pendingResume = false;
    bool m_startedNotified = false;
    std::shared_ptr<RecordingJournal> m_journal; // the session's
    RecordingFinisher m_finisher;
    RecordingRecovery m_recovery; // goes before what it uses
};
