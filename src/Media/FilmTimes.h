#pragma once

#include "Media/FrameReader.h"
#include "Media/Orientation.h"
#include "Support/Result.h"

#include <vector>

/// When each frame of a video begins to show, in seconds of the file's time as FrameReader has it,
/// and how.
struct FilmTimes {
    std::vector<double> frames; ///< Rising, at least one.
    double duration = 0;        ///< As FrameReader::duration; not before the last frame.
    Orientation orientation;    ///< What FrameReader does to each frame.

    /// Looks through the whole file, without decoding it. The limits are for all of it. Any thread.
    static Result<FilmTimes> read(const QString& path, const FrameReaderLimits& limits = {});
};
