#include "RecordingFinisher.h"

#include "RecordingJournal.h"
#include "Support/Background.h"
#include "Support/Guarded.h"
#include "Support/Log.h"
#include "Support/MoveFile.h"

#include <QDir>
#include <QFile>
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
        QFile::remove(segment.toLocalFile()); // one that stays does no harm
}

} // namespace

RecordingFinisher::RecordingFinisher(const RecordingTools& tools)
    : m_remux(tools.remux)
    , m_concatenate(tools.concatenate)
{
}

RecordingFinisher::~RecordingFinisher()
{
    m_running.cancel();
}

void RecordingFinisher::discard(const RecordedSegments& recorded)
{
    remove(recorded);
    recorded.completion({});
}

void RecordingFinisher::finish(const RecordedSegments& recorded)
{
    // It may have been taken away meanwhile.
    QDir().mkpath(QFileInfo(recorded.finalURL.toLocalFile()).path());
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
    using Outcome = MovieExport::Outcome;
    const auto exported = [this, recorded](const Outcome& outcome) {
        if (outcome.end == MovieExport::End::failed)
            Log::line(QStringLiteral("mp4 remux failed: ") +
                      QString::fromStdString(outcome.reason));
        if (!outcome.succeeded()) {
            moveUnfinished(recorded);
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

void RecordingFinisher::moveUnfinished(const RecordedSegments& recorded)
{
    const QFileInfo wanted(recorded.finalURL.toLocalFile());
    const QString fallback =
        wanted.path() + QLatin1Char('/') + wanted.completeBaseName() + QStringLiteral(".mov");
    const auto moved = Guarded::once<bool>(this, [recorded, fallback](bool succeeded) {
        if (succeeded)
            recorded.journal->remove(); // else the next start tries again
        recorded.completion(succeeded ? QUrl::fromLocalFile(fallback) : QUrl());
    });
    // It may go to another disk.
    Background::threads().start([segment = recorded.segments.front().toLocalFile(), fallback, moved,
                                 cancellation = m_running] {
        moved(!moveFile(segment, fallback, [&] { return cancellation.isCancelled(); }));
    });
}
