#include "Media/FFmpeg/Export/SoundReader.h"

#include "Media/Av/Text.h"
#include "Media/FFmpeg/Tracks.h"

#include <array>
#include <cstdlib>
#include <utility>

namespace {

/// Times of blocks are rounded; what is further off than that is a gap.
constexpr std::int64_t largestRounding = SoundReader::rate / 100;

std::uint8_t* bytesOf(std::vector<float>& samples)
{
    void* const start = samples.data();
    return static_cast<std::uint8_t*>(start);
}

} // namespace

SoundReader::SoundReader(std::unique_ptr<VideoFile> file, AVStream& stream,
                         const Patience& patience)
    : m_patience(patience)
    , m_file(std::move(file))
    , m_stream(stream)
    , m_packet(av_packet_alloc())
    , m_frame(av_frame_alloc())
    , m_kind(av_frame_alloc())
{
    Tracks::readOnly(m_file->context(), &stream);
}

Result<std::unique_ptr<SoundReader>> SoundReader::open(const std::string& path,
                                                       const Patience& patience)
{
    auto file = VideoFile::open(path, patience);
    if (!file)
        return file.failure();
    AVStream* const stream = Tracks::sound((*file)->context());
    if (!stream)
        return Failure{"there is no sound in " + path};
    std::unique_ptr<SoundReader> reader(new SoundReader(std::move(*file), *stream, patience));
    if (const PossibleFailure failure = reader->openCodec())
        return *failure;
    return reader;
}

PossibleFailure SoundReader::openCodec()
{
    const AVCodec* const codec = avcodec_find_decoder(m_stream.codecpar->codec_id);
    if (!codec)
        return Failure{"its sound codec is unknown"};
    m_codec.reset(avcodec_alloc_context3(codec));
    if (!m_codec || !m_packet || !m_frame || !m_kind)
        return Failure{"there is no memory left"};
    int error = avcodec_parameters_to_context(m_codec.get(), m_stream.codecpar);
    m_codec->pkt_timebase = m_stream.time_base;
    m_codec->thread_count = 1;
    if (error >= 0)
        error = avcodec_open2(m_codec.get(), codec, nullptr);
    if (error < 0)
        return Failure{"its sound cannot be decoded: " + Av::text(error)};
    return {};
}

bool SoundReader::decode()
{
    while (!m_patience.isOver()) {
        const int error = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (error == AVERROR_EOF)
            return false;
        if (error == AVERROR(EAGAIN))
            sendPacket();
        else if (error >= 0 && m_frame->nb_samples > 0 && m_frame->sample_rate > 0)
            return true;
    }
    return false;
}

void SoundReader::sendPacket()
{
    const int error = av_read_frame(&m_file->context(), m_packet.get());
    if (error == AVERROR(EAGAIN))
        return;
    if (error < 0) {
        avcodec_send_packet(m_codec.get(), nullptr); // the end, or as good as that
        return;
    }
    // A packet that the codec refuses is silence.
    if (m_packet->stream_index == m_stream.index && (m_packet->flags & AV_PKT_FLAG_CORRUPT) == 0)
        avcodec_send_packet(m_codec.get(), m_packet.get());
    av_packet_unref(m_packet.get());
}

std::optional<SoundBlock> SoundReader::next()
{
    while (decode()) {
        if (!prepareFor(*m_frame))
            continue;
        const std::int64_t time = m_frame->best_effort_timestamp;
        if (time != AV_NOPTS_VALUE) {
            const std::int64_t place = av_rescale_q(time, m_stream.time_base, {1, rate}) -
                                       (m_isPlaced ? swr_get_delay(m_resampler.get(), rate) : 0);
            if (!m_isPlaced || std::abs(place - m_place) > largestRounding)
                m_place = place;
        }
        m_isPlaced = true;
        SoundBlock block = converted(m_frame.get());
        if (!block.left.empty())
            return block;
    }
    if (m_isDrained || !m_resampler || m_patience.isOver())
        return {};
    m_isDrained = true;
    SoundBlock rest = converted(nullptr);
    return rest.left.empty() ? std::nullopt : std::optional(std::move(rest));
}

/// Sets the resampler up for frames such as this one.
bool SoundReader::prepareFor(const AVFrame& frame)
{
    const bool isSame = m_resampler && m_kind->format == frame.format &&
                        m_kind->sample_rate == frame.sample_rate &&
                        av_channel_layout_compare(&m_kind->ch_layout, &frame.ch_layout) == 0;
    if (isSame)
        return true;
    AVChannelLayout from = {};
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&from, frame.ch_layout.nb_channels);
    else
        av_channel_layout_copy(&from, &frame.ch_layout);
    // One channel is played on both sides as loud as it is, which is not how it would be mixed.
    AVChannelLayout to = {};
    av_channel_layout_default(&to, from.nb_channels == 1 ? 1 : 2);
    SwrContext* context = nullptr;
    int error = swr_alloc_set_opts2(&context, &to, AV_SAMPLE_FMT_FLTP, rate, &from,
                                    static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0,
                                    nullptr);
    m_resampler.reset(context);
    if (error >= 0)
        error = swr_init(context);
    av_channel_layout_uninit(&from);
    if (error < 0) {
        m_resampler.reset();
        return false;
    }
    m_kind->format = frame.format;
    m_kind->sample_rate = frame.sample_rate;
    return av_channel_layout_copy(&m_kind->ch_layout, &frame.ch_layout) >= 0;
}

/// Null: what the resampler still has.
SoundBlock SoundReader::converted(const AVFrame* frame)
{
    const int given = frame ? frame->nb_samples : 0;
    const int room = std::max(0, swr_get_out_samples(m_resampler.get(), given));
    SoundBlock block;
    block.start = m_place;
    block.left.resize(static_cast<std::size_t>(room));
    block.right.resize(static_cast<std::size_t>(room));
    std::array<std::uint8_t*, 2> planes{bytesOf(block.left), bytesOf(block.right)};
    // Both declarations of the library take what it only reads as something to be written.
    const auto** const input =
        frame ? const_cast<const std::uint8_t**>(frame->extended_data) : nullptr;
    const int count =
        std::max(0, swr_convert(m_resampler.get(), planes.data(), room, input, given));
    block.left.resize(static_cast<std::size_t>(count));
    block.right.resize(static_cast<std::size_t>(count));
    if (m_kind->ch_layout.nb_channels == 1)
        block.right = block.left;
    m_place += count;
    return block;
}
