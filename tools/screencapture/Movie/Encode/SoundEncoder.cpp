#include "Movie/Encode/SoundEncoder.h"

#include "Media/Av/Text.h"

namespace {

constexpr int channels = 2;
constexpr std::int64_t bitsASecond = 160000;

} // namespace

SoundEncoder::SoundEncoder(Av::Codec codec, Av::Frame frame)
    : Encoder(std::move(codec))
    , m_frame(std::move(frame))
{
}

Result<SoundEncoder> SoundEncoder::create()
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
    if (context.frame_size != blockFrames || context.initial_padding != blockFrames)
        return Failure{"the encoder aac has blocks of another size"};

    Av::Frame frame(av_frame_alloc());
    if (!frame)
        return Failure{"there is no memory left"};
    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->sample_rate = rate;
    frame->nb_samples = blockFrames;
    frame->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    const int error = av_frame_get_buffer(frame.get(), 0);
    if (error < 0)
        return Failure{"cannot encode: " + Av::text(error)};
    return SoundEncoder(std::move(*codec), std::move(frame));
}

Result<std::vector<Av::Packet>> SoundEncoder::encode(std::span<const float> block)
{
    // The packet for the delay takes the first block's place.
    if (m_blocks++ == 0)
        return std::vector<Av::Packet>{};
    const int error = av_frame_make_writable(m_frame.get());
    if (error < 0)
        return Failure{"cannot encode: " + Av::text(error)};
    for (int channel = 0; channel < channels; ++channel) {
        void* const plane = m_frame->data[channel];
        auto* const samples = static_cast<float*>(plane);
        for (std::size_t i = 0; i < blockFrames; ++i)
            samples[i] = block[i * channels + static_cast<std::size_t>(channel)];
    }
    // The encoder gives the first packet a time one block earlier: 0.
    m_frame->pts = (m_blocks - 1) * blockFrames;
    return send(m_frame.get());
}
