#include "RecordingFinisher.h"

#include "RecordingJournal.h"
#include "Support/Background.h"
#include "Support/Guarded.h"
#include "Support/Log.h"
#include "Support/MoveFile.h"
#include "Support/RemoveFile.h"

#include <QDir>
#include <QFileInfo>

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
    for (const QUrl& segment : recorded.segments)
        removeFile(segment.toLocalFile()); // one that stays does no harm
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
        if (outcome.end == End::failed || outcome.end == End::unreadable)
            Log::line(QStringLiteral("mp4 remux failed: ") +
                      QString::fromStdString(outcome.reason));
        if (!outcome.succeeded()) {
            if (outcome.end == End::unreadable)
                recorded.journal->loseAttempt(); // it may not be possible to move it either
            moveSegments(recorded);
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
    const auto exported = [recorded](const Outcome& outcome) {
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
    const QFileInfo wanted(finalURL.toLocalFile());
    QList<QUrl> result;
    for (qsizetype i = 1; i <= segments; ++i) {
        const QString number =
            segments == 1 ? QString() : QStringLiteral(" (%1 of %2)").arg(i).arg(segments);
        result += QUrl::fromLocalFile(wanted.path() + QLatin1Char('/') + wanted.completeBaseName() +
                                      number + QStringLiteral(".mov"));
    }
    return result;
}

void RecordingFinisher::giveSegments(const RecordedSegments& recorded)
{
    makeFolder(recorded);
    moveSegments(recorded);
}

void RecordingFinisher::moveSegments(const RecordedSegments& recorded)
{
    const auto ended = [recorded](const QList<QUrl>& moved) {
        if (moved.size() == recorded.segments.size())
            recorded.journal->remove(); // else the next start tries again
        recorded.completion(moved.isEmpty() ? QUrl() : moved.front());
    };
    // They may go to another disk.
    Background::threads().start([segments = recorded.segments,
                                 targets = places(recorded.finalURL, recorded.segments.size()),
                                 ended = Guarded::once<const QList<QUrl>&>(this, ended),
                                 cancellation = m_running] {
        QList<QUrl> moved;
        for (qsizetype i = 0; i < segments.size(); ++i) {
            if (!moveFile(segments[i].toLocalFile(), targets[i].toLocalFile(),
                          [&] { return cancellation.isCancelled(); }))
                moved += targets[i];
        }
        ended(moved);
    });
}
