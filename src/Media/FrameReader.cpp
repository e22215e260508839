#include "Media/FrameReader.h"

#include "Media/MediaModule.h"

Result<FrameReader> FrameReader::open(const QString& path, const FrameReaderLimits& limits)
{
    const MediaModule* module = MediaModule::get();
    if (!module)
        return Failure{"the library for video files is missing"};
    auto source = module->openFrames(path, limits);
    if (!source)
        return source.failure();
    return FrameReader(std::move(*source));
}
