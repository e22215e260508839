#include "Media/AnimatedGIF.h"

#include "Media/MediaModule.h"

PossibleFailure AnimatedGIF::write(const QString& video, const Frames& frames,
                                   const QString& destination, const Cancellation& cancellation)
{
    const MediaModule* const module = MediaModule::get();
    if (!module)
        return Failure{"the library for video files is missing"};
    return module->writeGIF(video, frames, destination, cancellation);
}
