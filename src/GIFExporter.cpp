#include "GIFExporter.h"

#include "GIFSchedule.h"
#include "Media/AnimatedGIF.h"
#include "Media/FrameReader.h"
#include "Support/FileTurn.h"

#include <QCoreApplication>
#include <QThreadPool>

#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace {

constexpr QSize largest = {800, 800}; // pixels

/// Those that run, whoever asked for them.
struct Exports {
    Exports()
    {
        threads.setMaxThreadCount(std::numeric_limits<int>::max());
        // The application object is there until the last one has ended.
        qAddPostRoutine([] {
            running().cancellation.cancel();
            running().threads.waitForDone();
        });
    }

    static Exports& running()
    {
        static Exports exports;
        return exports;
    }

    Cancellation cancellation;
    QThreadPool threads;
};

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
    Exports& exports = Exports::running();
    const auto turn = std::make_shared<FileTurn>(destination.toLocalFile());
    exports.threads.start([source = video.toLocalFile(), range, target = destination.toLocalFile(),
                           completion = std::move(completion), turn,
                           cancellation = exports.cancellation] {
        turn->await();
        const bool succeeded = makeGIF(source, range, target, cancellation);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [completion, succeeded] { completion(succeeded); },
            Qt::QueuedConnection);
    });
}
