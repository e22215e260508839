#include "RecordingFinisher.h"

#include "RecordingJournal.h"
#include "Support/Background.h"
#include "Support/CaptureFiles.h"
#include "Support/Guarded.h"
#include "Support/Log.h"
#include "Support/MoveFile.h"
#include "Support/RemoveFile.h"
#include "Support/Sibling.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

QStringList paths(const QList<QUrl>& files)
{
    QStringList result;
    for (const QUrl& file : files)
        result += file.toLocalFile();
    return result;
}

/// In this order: a segment without its journal is only waste, a journal without some of its
/// segments would make less than the whole of a file that is there already.
void remove(const RecordedSegments& recorded)
{
    recorded.journal->remove();
    removeFiles(recorded.segments);
}

/// It may have been taken away meanwhile.
void makeFolder(const RecordedSegments& recorded)
{
    QDir().mkpath(QFileInfo(recorded.finalURL.toLocalFile()).path());
}

} // namespace

RecordingFinisher::RecordingFinisher(const RecordingTools& tools)
    : m_remux(tools.remux)
    , m_concatenate(tools.concatenate)
{
}

RecordingFinisher::~RecordingFinisher()
{
    cancel();
}

void RecordingFinisher::discard(const RecordedSegments& recorded)
{
    remove(recorded);
    recorded.completion({});
}

void RecordingFinisher::finish(const RecordedSegments& recorded)
{
    makeFolder(recorded);
    if (recorded.segments.isEmpty()) {
        discard(recorded);
    } else if (recorded.segments.size() == 1) {
        remux(recorded);
    } else {
        concatenate(recorded);
    }
}

void RecordingFinisher::remux(const RecordedSegments& recorded)
{
    using MovieExport::End, MovieExport::Outcome;
    const auto exported = [this, recorded](const Outcome& outcome) {
        if (m_running.isCancelled())
            return;
        if (outcome.end == End::failed || outcome.end == End::unreadable)
            Log::line(QStringLiteral("mp4 remux failed: ") +
                      QString::fromStdString(outcome.reason));
        if (!outcome.succeeded()) {
            if (outcome.end == End::unreadable)
                recorded.journal->loseAttempt(); // it may not be possible to move it either
            giveSegments(recorded);
            return;
        }
        remove(recorded);
        recorded.completion(recorded.finalURL);
    };
    m_remux(recorded.segments.front().toLocalFile(), recorded.finalURL.toLocalFile(),
            Guarded::once<const Outcome&>(this, exported), m_running);
}

void RecordingFinisher::concatenate(const RecordedSegments& recorded)
{
    using Outcome = MovieExport::Outcome;
    const auto exported = [this, recorded](const Outcome& outcome) {
        if (m_running.isCancelled())
            return;
        if (outcome.end == MovieExport::End::unreadable)
            recorded.journal->loseAttempt(); // the next start tries again, but not for ever
        else
            remove(recorded);
        recorded.completion(outcome.succeeded() ? recorded.finalURL : QUrl());
    };
    m_concatenate(paths(recorded.segments), recorded.finalURL.toLocalFile(),
                  Guarded::once<const Outcome&>(this, exported), m_running);
}

QList<QUrl> RecordingFinisher::places(const QUrl& finalURL, qsizetype segments)
{
    QList<QUrl> result;
    for (qsizetype i = 1; i <= segments; ++i) {
        const QString number =
            segments == 1 ? QString() : QStringLiteral(" (%1 of %2)").arg(i).arg(segments);
        result += sibling(finalURL, number + QStringLiteral(".mov"));
    }
    return result;
}

void RecordingFinisher::giveSegments(const RecordedSegments& recorded)
{
    struct Moved {
        QList<QUrl> files;
        bool areAll = true;
    };
    const auto ended = [recorded](const Moved& moved) {
        if (moved.areAll)
            recorded.journal->remove(); // else the next start tries again
        recorded.completion(moved.files.isEmpty() ? QUrl() : moved.files.front());
    };
    const auto move = [segments = recorded.segments,
                       targets = places(recorded.finalURL, recorded.segments.size()),
                       cancellation = m_running] {
        Moved moved;
        for (qsizetype i = 0; i < segments.size(); ++i) {
            if (CaptureFiles::exists(segments[i]) &&
                moveFile(segments[i].toLocalFile(), targets[i].toLocalFile(),
                         [&] { return cancellation.isCancelled(); }))
                moved.areAll = false;
            else if (CaptureFiles::exists(targets[i]))
                moved.files += targets[i];
        }
        return moved;
    };
    if (std::none_of(recorded.segments.begin(), recorded.segments.end(), CaptureFiles::exists)) {
        ended(move());
        return;
    }
    makeFolder(recorded);
    Background::threads().start( // they may go to another disk
        [move, ended = Guarded::once<const Moved&>(this, ended)] { ended(move()); });
}
