#pragma once

#include "Media/Av/AacEncoder.h"

#include <cstdint>
#include <span>

/// AAC from interleaved stereo at 48 kHz.
///
/// What AAC gives back is late by one block. So a movie's first block of sound goes lost, and
/// everything after it is at its time in every player, whether that knows about the delay or not.
class SoundEncoder : public AacEncoder {
public:
    /// Frames in a block; only whole blocks are encoded.
    static constexpr int blockFrames = 1024;

    static Result<SoundEncoder> create();

    /// The next block; the first one starts with the movie.
    Result<std::vector<Av::Packet>> encode(std::span<const float> block);

private:
    explicit SoundEncoder(Parts parts)
        : AacEncoder(std::move(parts))
    {
    }

    std::int64_t m_blocks = 0;
};
