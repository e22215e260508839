#include "GIFExporter.h"

#include "GIFSchedule.h"
#include "Media/AnimatedGIF.h"
#include "Media/FrameReader.h"
#include "Support/Background.h"
#include "Support/FileTurn.h"

#include <QCoreApplication>

#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace {

constexpr QSize largest = {800, 800}; // pixels

/// Of all exports, whoever asked for them: their GIFs are of no use to a program that has ended.
const Cancellation& endOfProgram()
{
    static const Cancellation cancellation = [] {
        // Routines that are added last are called first: the threads are waited for afterwards.
        (void)Background::threads();
        qAddPostRoutine([] { endOfProgram().cancel(); });
        return Cancellation();
    }();
    return cancellation;
}

/// In seconds, 0 when it cannot be found out; absent when it is no video.
std::optional<double> durationOf(const QString& video, const Cancellation& cancellation)
{
    FrameReaderLimits limits;
    limits.cancellation = cancellation;
    auto reader = FrameReader::open(video, limits);
    if (!reader)
        return std::nullopt;
    if (const auto duration = reader->duration())
        return duration;
    // It was written as it was made, as browsers do: nobody knew then.
    const auto last = reader->showingAt(std::numeric_limits<double>::max());
    return last ? last->end : 0;
}

bool makeGIF(const QString& video, TimeRange range, const QString& destination,
             const Cancellation& cancellation)
{
    const auto duration = durationOf(video, cancellation);
    if (!duration)
        return false;
    const GIFSchedule schedule = GIFSchedule::of(range, *duration);
    return !AnimatedGIF::write(video, {schedule.times, schedule.delay, largest}, destination,
                               cancellation);
}

} // namespace

void GIFExporter::exportVideo(const QUrl& video, TimeRange range, const QUrl& destination,
                              std::function<void(bool succeeded)> completion)
{
    const auto turn = std::make_shared<FileTurn>(destination.toLocalFile());
    Background::threads().start(
        [source = video.toLocalFile(), range, target = destination.toLocalFile(),
         completion = std::move(completion), turn, cancellation = endOfProgram()] {
            turn->await();
            const bool succeeded = makeGIF(source, range, target, cancellation);
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [completion, succeeded] { completion(succeeded); },
                Qt::QueuedConnection);
        });
}
