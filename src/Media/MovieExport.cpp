#include "Media/MovieExport.h"

#include "Media/MediaModule.h"

#include <QThreadPool>

#include <limits>
#include <utility>

namespace {

MovieExport::Outcome missingModule()
{
    return {MovieExport::End::impossible, "the library for video files is missing"};
}

/// A pool of its own: an export takes minutes, and who reads a thumbnail shall not wait for it.
QThreadPool& threads()
{
    struct Pool : QThreadPool {
        Pool() { setMaxThreadCount(std::numeric_limits<int>::max()); }
    };
    static Pool pool;
    return pool;
}

} // namespace

MovieExport::Outcome MovieExport::remux(const QString& source, const QString& destination,
                                        const Cancellation& cancellation)
{
    const MediaModule* const module = MediaModule::get();
    return module ? module->remux(source, destination, cancellation) : missingModule();
}

MovieExport::Outcome MovieExport::concatenate(const QStringList& segments,
                                              const QString& destination,
                                              const Cancellation& cancellation)
{
    const MediaModule* const module = MediaModule::get();
    return module ? module->concatenate(segments, destination, cancellation) : missingModule();
}

MovieExport::Outcome MovieExport::trim(const QString& source, double start, double end,
                                       const QString& destination, const Cancellation& cancellation)
{
    const MediaModule* const module = MediaModule::get();
    return module ? module->trim(source, start, end, destination, cancellation) : missingModule();
}

void MovieExport::remuxInBackground(const QString& source, const QString& destination,
                                    Completion completion, const Cancellation& cancellation)
{
    threads().start([=, completion = std::move(completion)] {
        completion(remux(source, destination, cancellation));
    });
}

void MovieExport::concatenateInBackground(const QStringList& segments, const QString& destination,
                                          Completion completion, const Cancellation& cancellation)
{
    threads().start([=, completion = std::move(completion)] {
        completion(concatenate(segments, destination, cancellation));
    });
}

void MovieExport::trimInBackground(const QString& source, double start, double end,
                                   const QString& destination, Completion completion,
                                   const Cancellation& cancellation)
{
    threads().start([=, completion = std::move(completion)] {
        completion(trim(source, start, end, destination, cancellation));
    });
}
