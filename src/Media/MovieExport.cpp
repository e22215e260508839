#include "Media/MovieExport.h"

#include "Media/MediaModule.h"
#include "Support/Background.h"
#include "Support/FileTurn.h"

#include <memory>
#include <utility>

namespace {

MovieExport::Outcome missingModule()
{
    return {MovieExport::End::impossible, "the library for video files is missing"};
}

} // namespace

bool MovieExport::isPossible()
{
    return MediaModule::get() != nullptr;
}

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
                                    Completion completion, const Cancellation& cancellation,
                                    OnThread onThread)
{
    Background::threads().start(
        [=, completion = std::move(completion), onThread = std::move(onThread)] {
            if (onThread)
                onThread();
            completion(remux(source, destination, cancellation));
        });
}

void MovieExport::concatenateInBackground(const QStringList& segments, const QString& destination,
                                          Completion completion, const Cancellation& cancellation,
                                          OnThread onThread)
{
    Background::threads().start(
        [=, completion = std::move(completion), onThread = std::move(onThread)] {
            if (onThread)
                onThread();
            completion(concatenate(segments, destination, cancellation));
        });
}

void MovieExport::trimInBackground(const QString& source, double start, double end,
                                   const QString& destination, Completion completion,
                                   const Cancellation& cancellation)
{
    const auto turn = std::make_shared<FileTurn>(destination);
    Background::threads().start([=, completion = std::move(completion)] {
        turn->await();
        completion(trim(source, start, end, destination, cancellation));
    });
}
