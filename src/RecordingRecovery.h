#pragma once

#include "RecordingFinisher.h"
#include "RecordingJournal.h"
#include "RecordingTools.h"

#include <QObject>
#include <QSet>
#include <QUrl>

#include <functional>
#include <memory>
#include <vector>

/// Makes films of the segments that earlier runs of the program left. Main thread only.
///
/// One at a time, and those first with which the program has not ended before: what a file does to
/// the library for videos may end it. After three times such segments are given as they are.
class RecordingRecovery : public QObject {
public:
    /// Called with each file; empty ones do not come.
    using Recovered = std::function<void(const QUrl& file, bool asGIF)>;

    /// Both outlive this.
    RecordingRecovery(const RecordingTools& tools, RecordingFinisher& finisher);

    /// Whatever is under way then is the next start's.
    ~RecordingRecovery() override;

    /// Looks for what there is. A capture tool that has outlived its program is waited for.
    void begin(const Recovered& recovered);

private:
    void look(const Recovered& recovered, int number);
    void take(RecordingJournal::Found found, const Recovered& recovered);
    void give(RecordedSegments segments, const RecordingJournal::Entry& entry,
              const Recovered& recovered);
    void recoverNext();
    void endAttempt();
    static void endInOrder();

    struct Waiting {
        RecordedSegments segments;
        int lostAttempts = 0;
    };

    const RecordingTools& m_tools;
    RecordingFinisher& m_finisher;
    std::vector<Waiting> m_waiting; // the next one first
    QSet<QString> m_tried;          // journals, by their paths
    std::shared_ptr<RecordingJournal> m_current;
};
