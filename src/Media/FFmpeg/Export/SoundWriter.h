#pragma once

#include "Media/Av/AacEncoder.h"

#include <cstdint>
#include <span>

/// AAC from stereo at 48 kHz. Its first packet is earlier than 0, and the container tells players
/// to leave that out, so what comes out is at its time to the sample.
class SoundWriter : public AacEncoder {
public:
    static Result<SoundWriter> create();

    /// How many samples it was given: the time of the next one.
    std::int64_t position() const { return m_position; }

    /// Both are as long as each other.
    Result<std::vector<Av::Packet>> add(std::span<const float> left, std::span<const float> right);

    Result<std::vector<Av::Packet>> addSilence(std::int64_t samples);

    /// The rest.
    Result<std::vector<Av::Packet>> finish();

private:
    explicit SoundWriter(Parts parts);

    Result<std::vector<Av::Packet>> encodeFilled();
    PossibleFailure fill(std::size_t count, std::span<const float> left,
                         std::span<const float> right, std::vector<Av::Packet>& packets);

    std::size_t m_filled = 0; // of the block
    std::size_t m_blockSize;
    std::int64_t m_position = 0;
};
