#pragma once

#include "Media/AnimatedGIF.h"
#include "Media/FilmTimes.h"
#include "Media/FrameReader.h"
#include "Media/MovieExport.h"

/// The library that reads and writes video files. It brings a hundred others along, which cost a
/// start tens of milliseconds and tens of megabytes: most runs of the program never need them, so
/// it is loaded when a video is first touched, and stays then.
struct MediaModule {
    /// As FrameReader::open.
    Result<std::unique_ptr<FrameSource>> (*openFrames)(const QString& path,
                                                       const FrameReaderLimits& limits);
    /// As FilmTimes::read.
    Result<FilmTimes> (*readTimes)(const QString& path, const FrameReaderLimits& limits);
    /// As MovieExport's of the same names.
    MovieExport::Outcome (*remux)(const QString& source, const QString& destination,
                                  const Cancellation& cancellation);
    MovieExport::Outcome (*concatenate)(const QStringList& segments, const QString& destination,
                                        const Cancellation& cancellation);
    MovieExport::Outcome (*trim)(const QString& source, double start, double end,
                                 const QString& destination, const Cancellation& cancellation);
    /// As AnimatedGIF::write.
    PossibleFailure (*writeGIF)(const QString& video, const AnimatedGIF::Frames& frames,
                                const QString& destination, const Cancellation& cancellation);

    /// The module, loaded by the first call; null when it is missing. Any thread.
    static const MediaModule* get();

    /// The name of the function in the library that returns the module.
    static constexpr const char* entry = "tamrikMediaModule";
};
