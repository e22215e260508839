#include "Media/MediaModule.h"

#include "Media/FFmpeg/Export/Concatenation.h"
#include "Media/FFmpeg/Export/GIFFile.h"
#include "Media/FFmpeg/Export/Remux.h"
#include "Media/FFmpeg/Export/Trim.h"
#include "Media/FFmpeg/FrameTimes.h"
#include "Media/FFmpeg/Video.h"

#include <QtGlobal>

extern "C" Q_DECL_EXPORT const MediaModule* tamrikMediaModule();

const MediaModule* tamrikMediaModule()
{
    static const MediaModule module = {.openFrames = Video::open,
                                       .readTimes = readFilmTimes,
                                       .remux = remuxMovie,
                                       .concatenate = concatenateMovies,
                                       .trim = trimMovie,
                                       .writeGIF = writeGIF};
    return &module;
}
