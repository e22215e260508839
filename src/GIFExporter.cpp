#include "GIFExporter.h"

#include "GIFSchedule.h"
#include "Media/AnimatedGIF.h"
#include "Media/FrameReader.h"

#include <QCoreApplication>
#include <QThreadPool>

#include <limits>
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

/// In seconds, 0 when the file does not say; absent when it is no video.
std::optional<double> durationOf(const QString& video, const Cancellation& cancellation)
{
    FrameReaderLimits limits;
    limits.cancellation = cancellation;
    const auto reader = FrameReader::open(video, limits);
    return reader ? std::optional(reader->duration().value_or(0)) : std::nullopt;
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
    exports.threads.start([source = video.toLocalFile(), range, target = destination.toLocalFile(),
                           completion = std::move(completion),
                           cancellation = exports.cancellation] {
        const bool succeeded = makeGIF(source, range, target, cancellation);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [completion, succeeded] { completion(succeeded); },
            Qt::QueuedConnection);
    });
}
