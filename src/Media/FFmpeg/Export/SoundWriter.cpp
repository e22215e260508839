#include "Media/FFmpeg/Export/SoundWriter.h"

#include "Media/Av/Text.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr int channels = 2;
constexpr std::int64_t bitsASecond = 192000;

float* samplesOf(AVFrame& frame, int channel)
{
    void* const plane = frame.data[channel];
    return static_cast<float*>(plane);
}

} // namespace

SoundWriter::SoundWriter(Av::Codec codec, Av::Frame frame)
    : Encoder(std::move(codec))
    , m_frame(std::move(frame))
    , m_blockSize(static_cast<std::size_t>(m_frame->nb_samples))
{
}

Result<SoundWriter> SoundWriter::create()
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

    Av::Frame frame(av_frame_alloc());
    if (!frame)
        return Failure{"there is no memory left"};
    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->sample_rate = rate;
    frame->nb_samples = context.frame_size;
    frame->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    const int error = av_frame_get_buffer(frame.get(), 0);
    if (error < 0)
        return Failure{"cannot encode: " + Av::text(error)};
    return SoundWriter(std::move(*codec), std::move(frame));
}

Result<std::vector<Av::Packet>> SoundWriter::add(std::span<const float> left,
                                                 std::span<const float> right)
{
    std::vector<Av::Packet> packets;
    if (const PossibleFailure failure = fill(left.size(), left, right, packets))
        return *failure;
    return packets;
}

Result<std::vector<Av::Packet>> SoundWriter::addSilence(std::int64_t samples)
{
    std::vector<Av::Packet> packets;
    const auto count = static_cast<std::size_t>(std::max<std::int64_t>(samples, 0));
    if (const PossibleFailure failure = fill(count, {}, {}, packets))
        return *failure;
    return packets;
}

/// Silence when `left` is empty.
PossibleFailure SoundWriter::fill(std::size_t count, std::span<const float> left,
                                  std::span<const float> right, std::vector<Av::Packet>& packets)
{
    for (std::size_t done = 0; done < count;) {
        const int error = av_frame_make_writable(m_frame.get());
        if (error < 0)
            return Failure{"cannot encode: " + Av::text(error)};
        const std::size_t part = std::min(count - done, m_blockSize - m_filled);
        for (int channel = 0; channel < channels; ++channel) {
            const std::span<const float> source = channel == 0 ? left : right;
            float* const target = samplesOf(*m_frame, channel) + m_filled;
            if (source.empty())
                std::fill_n(target, part, 0.0F);
            else
                std::copy_n(source.data() + done, part, target);
        }
        done += part;
        m_filled += part;
        m_position += static_cast<std::int64_t>(part);
        if (m_filled < m_blockSize)
            continue;
        Result<std::vector<Av::Packet>> encoded = encodeFrame();
        if (!encoded)
            return encoded.failure();
        std::move(encoded->begin(), encoded->end(), std::back_inserter(packets));
    }
    return {};
}

Result<std::vector<Av::Packet>> SoundWriter::encodeFrame()
{
    m_frame->nb_samples = static_cast<int>(m_filled);
    m_frame->pts = m_position - static_cast<std::int64_t>(m_filled);
    m_filled = 0;
    return send(m_frame.get());
}

Result<std::vector<Av::Packet>> SoundWriter::finish()
{
    std::vector<Av::Packet> packets;
    if (m_filled > 0) {
        Result<std::vector<Av::Packet>> last = encodeFrame();
        if (!last)
            return last;
        packets = std::move(*last);
    }
    Result<std::vector<Av::Packet>> rest = Encoder::finish();
    if (!rest)
        return rest;
    std::move(rest->begin(), rest->end(), std::back_inserter(packets));
    return packets;
}
