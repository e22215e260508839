#pragma once

#include "Media/Av/H264Encoder.h"
#include "Media/Av/Handles.h"
#include "Media/FFmpeg/Patience.h"
#include "Support/Result.h"

#include <cstdint>
#include <string>
#include <vector>

/// What is known of a movie that is to be joined with others.
struct Segment {
    /// Ticks a second of movies' own times: those of pictures are exact in them.
    static constexpr int ticksASecond = H264Encoder::ticksASecond;

    std::string path;
    std::int64_t fileSize = 0; ///< In bytes.
    /// Of the longer of its tracks, as far as the file really has it; in movie ticks.
    std::int64_t duration = 0;
    bool hasSound = false;
    /// The times of the key frames that can be read, in the file's own ticks; at least one.
    std::vector<std::int64_t> keys;
    AVRational ticks{1, ticksASecond}; ///< The file's own.

    /// A failure when there is no picture in it.
    static Result<Segment> inspect(const std::string& path, const Patience& patience);
};
