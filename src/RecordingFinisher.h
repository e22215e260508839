#pragma once

#include "Media/Cancellation.h"
#include "RecordingTools.h"

#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

class RecordingJournal;

/// What is there of a recording that is over.
struct RecordedSegments {
    /// Oldest first; all exist, but for those that only are to be given.
    QList<QUrl> segments;
    /// The MP4 to produce.
    QUrl finalURL;
    /// Goes together with the segments.
    std::shared_ptr<RecordingJournal> journal;
    /// Called once with the file, or with an empty URL when there is none.
    std::function<void(const QUrl& file)> completion;
};

/// Turns segments into a recording's one file, any number of recordings at a time. Main thread
/// only.
///
/// One that goes in the middle leaves segments and journal as they are, and nobody is told.
class RecordingFinisher : public QObject {
public:
    explicit RecordingFinisher(const RecordingTools& tools);
    ~RecordingFinisher() override;

    /// Makes the file. One segment that cannot be made an MP4 becomes the file as it is, with the
    /// extension "mov".
    void finish(const RecordedSegments& recorded);

    /// Makes no film: moves the segments to where it was to be, with the extension "mov", and
    /// numbered when there are several. Some may have been moved by an earlier run. The first one
    /// that is there then is what completes the recording. Those that cannot be moved stay with
    /// their journal.
    void giveSegments(const RecordedSegments& recorded);

    /// Ends what is under way, and all of this's work, as going does.
    void cancel() { m_running.cancel(); }

    /// Deletes everything; there is no file.
    static void discard(const RecordedSegments& recorded);

private:
    void remux(const RecordedSegments& recorded);
    void concatenate(const RecordedSegments& recorded);
    static QList<QUrl> places(const QUrl& finalURL, qsizetype segments);

    RecordingTools::Remux m_remux;
    RecordingTools::Concatenate m_concatenate;
    Cancellation m_running;
};
