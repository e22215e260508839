#include "RecordingManager.h"

#include "Platform/CaptureTool.h"
#include "Platform/Screens.h"
#include "Support/CaptureFiles.h"
#include "Support/Guarded.h"
#include "Support/Log.h"
#include "Support/Process.h"
#include "Support/RemoveFile.h"
#include "Support/ToolRectangle.h"

#include <QStringDecoder>
#include <QUuid>

#include <algorithm>
#include <utility>

namespace {

QUrl newSegment(const QString& folder)
{
    return QUrl::fromLocalFile(folder + QStringLiteral("/tamrik-seg-") +
                               QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() +
                               QStringLiteral(".mov"));
}

Process::Command toolCommand(const RecordingSession& session, const QUrl& segment,
                             Geometry::Rect primaryFrame)
{
    const Platform::CaptureTool tool = Platform::captureTool();
    Process::Command command = {
        .program = tool.program,
        .arguments = {QStringLiteral("-v"), QStringLiteral("-x"), QStringLiteral("-C"),
                      QStringLiteral("-R"), ToolRectangle::text(session.rect, primaryFrame)},
        .environment = tool.environment,
        .keepsErrors = true,
        .isLeftRunning = true,
    };
    if (session.showClicks)
        command.arguments += QStringLiteral("-k");
    if (session.micEnabled)
        command.arguments += QStringLiteral("-g");
    command.arguments += segment.toLocalFile();
    return command;
}

} // namespace

RecordingManager::RecordingManager(RecordingTools tools, QObject* parent)
    : QObject(parent)
    , m_tools(std::move(tools))
    , m_finisher(m_tools)
    , m_recovery(m_tools, m_finisher)
{
}

RecordingManager::~RecordingManager()
{
    interrupt();
    const bool isFilming = m_film && !m_film->waitForEnd();
    if (m_session && m_discardOnFinish) {
        removeFiles(m_segments + QList{m_filming});
        // A file that is still to come needs somebody to throw it away.
        if (!isFilming)
            m_journal->remove();
    }
}

bool RecordingManager::isPaused() const
{
    return m_state == RecordingState::pausing || m_state == RecordingState::paused;
}

double RecordingManager::elapsed() const
{
    if (!m_segmentStart)
        return m_activeAccum;
    // Somebody may set the clock back meanwhile.
    const qint64 running = std::max(m_segmentStart->msecsTo(m_tools.clock.now()), qint64{0});
    return m_activeAccum + static_cast<double>(running) / 1000;
}

void RecordingManager::start(const RecordingSession& session)
{
    if (m_state != RecordingState::idle || Platform::screens().empty()) {
        session.completion({});
        return;
    }
    m_session = session;
    m_segments.clear();
    m_activeAccum = 0;
    m_discardOnFinish = false;
    m_pendingResume = false;
    m_startedNotified = false;
    m_journal = std::make_shared<RecordingJournal>(m_tools.folder);
    launchSegment();
}

void RecordingManager::togglePause()
{
    switch (m_state) {
    case RecordingState::recording:
        m_state = RecordingState::pausing;
        interrupt();
        return;
    case RecordingState::pausing:
        m_pendingResume = true;
        return;
    case RecordingState::paused:
        launchSegment();
        return;
    case RecordingState::idle:
    case RecordingState::stopping:
    case RecordingState::restarting:
        return;
    }
}

void RecordingManager::stop(bool discard)
{
    const bool wasDiscarded = std::exchange(m_discardOnFinish, m_discardOnFinish || discard);
    switch (m_state) {
    case RecordingState::recording:
    case RecordingState::pausing:
        m_state = RecordingState::stopping;
        if (m_discardOnFinish)
            noteDiscard();
        interrupt();
        return;
    case RecordingState::paused:
        finishSession();
        return;
    case RecordingState::stopping:
        if (discard && !wasDiscarded)
            noteDiscard();
        return;
    case RecordingState::idle:
    case RecordingState::restarting:
        return;
    }
}

void RecordingManager::restart()
{
    switch (m_state) {
    case RecordingState::recording:
    case RecordingState::pausing:
        m_state = RecordingState::restarting;
        m_pendingResume = false;
        noteDiscard();
        interrupt();
        return;
    case RecordingState::paused:
        beginAfresh();
        return;
    case RecordingState::idle:
    case RecordingState::stopping:
    case RecordingState::restarting:
        return;
    }
}

void RecordingManager::beginAfresh()
{
    cleanupSegments();
    m_activeAccum = 0;
    launchSegment();
}

void RecordingManager::launchSegment()
{
    if (!m_session)
        return;
    const QUrl segment = newSegment(m_tools.folder);
    const auto screens = Platform::screens();
    if (screens.empty()) {
        finishSession();
        return;
    }
    Process::Command command = toolCommand(*m_session, segment, screens.front().frame);
    note(m_segments + QList{segment});
    // So that a tool that has outlived us is known to be at it still.
    command.sharedDescriptor = m_journal->lockedDescriptor();
    auto film = m_tools.launch(command, Guarded::once(this, [this, segment] {
                                   if (!CaptureFiles::exists(segment))
                                       logErrors();
                                   segmentEnded(segment);
                               }));
    if (!film) {
        Log::line(QStringLiteral("failed to start recording: ") +
                  QString::fromStdString(film.failure().message));
        finishSession();
        return;
    }
    m_film = std::move(*film);
    m_filming = segment;
    m_state = RecordingState::recording;
    m_segmentStart = m_tools.clock.now();
    if (!std::exchange(m_startedNotified, true))
        m_session->started();
}

void RecordingManager::logErrors() const
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = m_film ? utf8(m_film->errors()) : QString();
    if (!text.isEmpty() && !utf8.hasError())
        Log::line(QStringLiteral("recording segment failed: ") + text);
}

void RecordingManager::segmentEnded(const QUrl& segment)
{
    m_activeAccum = elapsed();
    m_segmentStart.reset();
    m_film.reset();
    if (CaptureFiles::exists(segment))
        m_segments += segment;
    switch (m_state) {
    case RecordingState::restarting:
        beginAfresh();
        return;
    case RecordingState::pausing:
        if (std::exchange(m_pendingResume, false))
            launchSegment();
        else
            m_state = RecordingState::paused;
        return;
    case RecordingState::idle:
    case RecordingState::recording:
    case RecordingState::paused:
    case RecordingState::stopping:
        finishSession();
        return;
    }
}

void RecordingManager::interrupt()
{
    if (m_film)
        m_film->interrupt();
}

void RecordingManager::cleanupSegments()
{
    removeFiles(std::exchange(m_segments, {}));
}

void RecordingManager::note(const QList<QUrl>& segments)
{
    // Without a journal the recording goes on all the same.
    (void)m_journal->write({.finalURL = m_session->finalURL,
                            .asGIF = m_session->asGIF,
                            .segments = segments,
                            .discarded = m_discardOnFinish});
}

void RecordingManager::noteDiscard()
{
    (void)m_journal->discard(); // the tool that still runs holds this very file
}

void RecordingManager::finishSession()
{
    m_state = RecordingState::idle;
    m_segmentStart.reset();
    m_film.reset();
    if (!m_session)
        return;
    const RecordingSession session = *std::exchange(m_session, std::nullopt);
    const RecordedSegments recorded = {.segments = std::exchange(m_segments, {}),
                                       .finalURL = session.finalURL,
                                       .journal = std::exchange(m_journal, nullptr),
                                       .completion = session.completion};
    if (m_discardOnFinish)
        m_finisher.discard(recorded);
    else
        m_finisher.finish(recorded);
}

void RecordingManager::recover(const Recovered& recovered)
{
    m_recovery.begin(recovered);
}
