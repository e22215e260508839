#include "RecordingRecovery.h"

#include "Support/Background.h"
#include "Support/CaptureFiles.h"
#include "Support/Guarded.h"

#include <QThread>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// How journals that somebody holds are looked at again. A capture tool that has lost its program
/// mostly finishes its file within a moment, on a slow disk within minutes; what is held for longer
/// belongs to another one that records, and the next start looks again.
constexpr auto quickPause = 1s;
constexpr int quickLooks = 10;
constexpr auto slowPause = 10s;
constexpr int allLooks = quickLooks + 60;

constexpr int mostLostAttempts = 3;

/// The one that makes a film; null when none does.
RecordingRecovery* busy = nullptr;

} // namespace

RecordingRecovery::RecordingRecovery(const RecordingTools& tools, RecordingFinisher& finisher)
    : m_tools(tools)
    , m_finisher(finisher)
{
}

RecordingRecovery::~RecordingRecovery()
{
    endAttempt();
}

/// A library may end the program through no fault of the film's: Qt does so when the X server goes,
/// as it does at a logout.
void RecordingRecovery::endInOrder()
{
    if (!busy || QThread::currentThread() != busy->thread())
        return;
    busy->m_finisher.cancel();
    busy->endAttempt();
}

void RecordingRecovery::endAttempt()
{
    if (busy == this)
        busy = nullptr;
    if (const auto current = std::exchange(m_current, nullptr))
        current->endAttempt();
}

void RecordingRecovery::begin(const Recovered& recovered)
{
    look(recovered, 1);
}

void RecordingRecovery::look(const Recovered& recovered, int number)
{
    auto search = RecordingJournal::claimAbandoned(m_tools.folder);
    for (RecordingJournal::Found& found : search.found)
        take(std::move(found), recovered);
    recoverNext();
    if (search.othersAreHeld && number < allLooks) {
        m_tools.clock.after(
            number < quickLooks ? quickPause : slowPause,
            Guarded::once(this, [this, recovered, number] { look(recovered, number + 1); }));
    }
}

void RecordingRecovery::take(RecordingJournal::Found found, const Recovered& recovered)
{
    const RecordingJournal::Entry& entry = found.entry;
    RecordedSegments left = {.segments = {},
                             .finalURL = entry.finalURL,
                             .journal = std::move(found.journal),
                             .completion = [recovered, asGIF = entry.asGIF](const QUrl& file) {
                                 if (!file.isEmpty())
                                     recovered(file, asGIF);
                             }};
    std::copy_if(entry.segments.begin(), entry.segments.end(), std::back_inserter(left.segments),
                 CaptureFiles::exists);
    if (entry.discarded) {
        RecordingFinisher::discard(left);
        return;
    }
    if (m_tried.contains(left.journal->path()))
        return; // the next start may have more luck
    m_tried.insert(left.journal->path());
    if (left.segments.isEmpty() || entry.lostAttempts >= mostLostAttempts) {
        give(std::move(left), entry, recovered);
    } else {
        const auto place =
            std::find_if(m_waiting.begin(), m_waiting.end(), [&](const Waiting& other) {
                return other.lostAttempts > entry.lostAttempts;
            });
        m_waiting.insert(place, {std::move(left), entry.lostAttempts});
    }
}

/// The program may have ended when some of them or all were moved, before anybody was told.
void RecordingRecovery::give(RecordedSegments segments, const RecordingJournal::Entry& entry,
                             const Recovered& recovered)
{
    segments.segments = entry.segments; // they are numbered as they were
    // Nothing is made of them: they are only a part of what was filmed, or they end the program.
    segments.completion = [recovered](const QUrl& file) {
        if (!file.isEmpty())
            recovered(file, false);
    };
    m_finisher.giveSegments(segments);
}

void RecordingRecovery::recoverNext()
{
    if (m_current || m_waiting.empty())
        return;
    RecordedSegments next = std::move(m_waiting.front().segments);
    m_waiting.erase(m_waiting.begin());
    m_current = next.journal;
    m_current->beginAttempt();
    busy = this;
    Background::threads(); // which thereby still are there at the exit
    static const bool isTold = std::atexit(endInOrder) == 0;
    (void)isTold;
    next.completion = [this, completion = std::move(next.completion)](const QUrl& file) {
        endAttempt();
        completion(file);
        recoverNext();
    };
    m_finisher.finish(next);
}
