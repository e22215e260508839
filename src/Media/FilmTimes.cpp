#include "Media/FilmTimes.h"

#include "Media/MediaModule.h"

Result<FilmTimes> FilmTimes::read(const QString& path, const FrameReaderLimits& limits)
{
    const MediaModule* const module = MediaModule::get();
    if (!module)
        return Failure{"the library for video files is missing"};
    return module->readTimes(path, limits);
}
