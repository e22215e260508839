#include "Media/Av/AacEncoder.h"

#include "Media/Av/Text.h"

Result<AacEncoder::Parts> AacEncoder::openParts(std::int64_t bitsASecond)
{
    Result<Av::Codec> codec = codecNamed("aac");
    if (!codec)
        return codec.failure();
    AVCodecContext& context = **codec;
    context.sample_rate = rate;
    context.ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    context.sample_fmt = AV_SAMPLE_FMT_FLTP;
    context.bit_rate = bitsASecond;
    context.time_base = {1, rate};
    if (PossibleFailure failure = open(context))
        return *failure;

    Av::Frame block(av_frame_alloc());
    if (!block)
        return Failure{"there is no memory left"};
    block->format = AV_SAMPLE_FMT_FLTP;
    block->sample_rate = rate;
    block->nb_samples = context.frame_size;
    block->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    const int error = av_frame_get_buffer(block.get(), 0);
    if (error < 0)
        return Failure{"cannot encode: " + Av::text(error)};
    return Parts{std::move(*codec), std::move(block)};
}

PossibleFailure AacEncoder::prepareBlock()
{
    const int error = av_frame_make_writable(m_block.get());
    if (error < 0)
        return Failure{"cannot encode: " + Av::text(error)};
    return {};
}

float* AacEncoder::samples(int channel)
{
    void* const plane = m_block->data[channel];
    return static_cast<float*>(plane);
}

Result<std::vector<Av::Packet>> AacEncoder::encodeBlock(int count, std::int64_t time)
{
    m_block->nb_samples = count;
    m_block->pts = time;
    return send(m_block.get());
}
