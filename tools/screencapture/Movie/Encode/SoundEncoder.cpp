#include "Movie/Encode/SoundEncoder.h"

namespace {

constexpr std::int64_t bitsASecond = 160000;

} // namespace

Result<SoundEncoder> SoundEncoder::create()
{
    Result<Parts> parts = openParts(bitsASecond);
    if (!parts)
        return parts.failure();
    const AVCodecContext& codec = *parts->codec;
    if (codec.frame_size != blockFrames || codec.initial_padding != blockFrames)
        return Failure{"the encoder aac has blocks of another size"};
    return SoundEncoder(std::move(*parts));
}

Result<std::vector<Av::Packet>> SoundEncoder::encode(std::span<const float> block)
{
    // The packet for the delay takes the first block's place.
    if (m_blocks++ == 0)
        return std::vector<Av::Packet>{};
    if (const PossibleFailure failure = prepareBlock())
        return *failure;
    for (int channel = 0; channel < channels; ++channel) {
        float* const target = samples(channel);
        for (std::size_t i = 0; i < blockFrames; ++i)
            target[i] = block[i * channels + static_cast<std::size_t>(channel)];
    }
    // The encoder gives the first packet a time one block earlier: 0.
    return encodeBlock(blockFrames, (m_blocks - 1) * blockFrames);
}
