#pragma once

#include "Media/Av/Encoder.h"

#include <cstdint>

/// AAC from stereo at 48 kHz, a block of samples at a time.
class AacEncoder : public Encoder {
public:
    static constexpr int rate = 48000;

protected:
    static constexpr int channels = 2;

    struct Parts {
        Av::Codec codec;
        Av::Frame block; ///< As large as the codec takes them.
    };

    static Result<Parts> openParts(std::int64_t bitsASecond);

    explicit AacEncoder(Parts parts)
        : Encoder(std::move(parts.codec))
        , m_block(std::move(parts.block))
    {
    }

    /// Samples may be put into the block then.
    PossibleFailure prepareBlock();
    float* samples(int channel);

    /// The block's first `count` samples; the first one sounds at `time`, in samples.
    Result<std::vector<Av::Packet>> encodeBlock(int count, std::int64_t time);

private:
    Av::Frame m_block;
};
