#include "Media/FFmpeg/FrameDecoder.h"

#include "Media/Av/Text.h"
#include "Media/FFmpeg/Tracks.h"

#include <new>

namespace {

/// 8K has 33 million; every frame that the codec keeps takes memory for as many.
constexpr std::int64_t maximumPixels = std::int64_t{36} << 20;

} // namespace

FrameDecoder::FrameDecoder(AVFormatContext& file, AVStream& stream, const Patience& patience)
    : m_file(file)
    , m_stream(stream)
    , m_patience(patience)
    , m_packet(av_packet_alloc())
{
    if (!m_packet)
        throw std::bad_alloc();
    Tracks::readOnly(file, &stream);
}

Result<std::unique_ptr<FrameDecoder>> FrameDecoder::open(AVFormatContext& file,
                                                         const Patience& patience)
{
    AVStream* const stream = Tracks::picture(file);
    if (!stream)
        return Failure{"there is no video in it"};
    std::unique_ptr<FrameDecoder> decoder(new FrameDecoder(file, *stream, patience));
    if (const PossibleFailure failure = decoder->openCodec())
        return *failure;
    return decoder;
}

PossibleFailure FrameDecoder::openCodec()
{
    const AVCodec* const codec = avcodec_find_decoder(m_stream.codecpar->codec_id);
    if (!codec)
        return Failure{"its video codec is unknown"};
    m_codec.reset(avcodec_alloc_context3(codec));
    if (!m_codec)
        return Failure{"there is no memory left"};
    int error = avcodec_parameters_to_context(m_codec.get(), m_stream.codecpar);
    m_codec->pkt_timebase = m_stream.time_base;
    m_codec->max_pixels = maximumPixels;
    // Frames come out without delay, and whoever wants many of them at once runs several readers.
    m_codec->thread_count = 1;
    if (error >= 0)
        error = avcodec_open2(m_codec.get(), codec, nullptr);
    if (error < 0)
        return Failure{"its video cannot be decoded: " + Av::text(error)};
    return {};
}

Av::Frame FrameDecoder::next()
{
    Av::Frame frame(av_frame_alloc());
    if (!frame)
        return nullptr;
    while (!m_patience.isOver()) {
        const int error = avcodec_receive_frame(m_codec.get(), frame.get());
        if (error == AVERROR_EOF)
            return nullptr;
        if (error == AVERROR(EAGAIN)) {
            sendPacket();
            continue;
        }
        if (error < 0 || frame->width <= 0 || frame->height <= 0)
            continue; // a broken frame; the next may be whole
        const bool hasTime = frame->best_effort_timestamp != AV_NOPTS_VALUE;
        m_lastShown = hasTime ? frame->best_effort_timestamp : m_lastShown + 1;
        frame->pts = m_lastShown;
        frame->sample_aspect_ratio = av_guess_sample_aspect_ratio(&m_file, &m_stream, frame.get());
        return frame;
    }
    return nullptr;
}

void FrameDecoder::sendPacket()
{
    const int error = av_read_frame(&m_file, m_packet.get());
    if (error == AVERROR(EAGAIN))
        return;
    if (error < 0) {
        avcodec_send_packet(m_codec.get(), nullptr); // the end, or as good as that
        return;
    }
    if (m_packet->stream_index == m_stream.index) {
        const bool hasTime = m_packet->dts != AV_NOPTS_VALUE;
        m_lastTime = hasTime ? m_packet->dts : m_packet->pts;
        if (m_firstTime == INT64_MIN)
            m_firstTime = m_lastTime;
        m_codec->skip_frame = isDispensable(*m_packet) ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
        // A packet that the codec refuses is one frame less.
        avcodec_send_packet(m_codec.get(), m_packet.get());
    }
    av_packet_unref(m_packet.get());
}

bool FrameDecoder::isDispensable(const AVPacket& packet)
{
    if (packet.pts == AV_NOPTS_VALUE || packet.pts > m_wanted)
        return false;
    if (packet.pts < m_closest)
        return true;
    m_closest = packet.pts;
    return false;
}

std::int64_t FrameDecoder::endOf(const AVFrame& frame) const
{
    // In fragments what FFmpeg takes for its duration is a guess.
    const auto end = Tracks::endOfSample(m_stream, frame.pts);
    return end ? *end : frame.pts + frame.pkt_duration;
}

bool FrameDecoder::isKnownToShow(const AVFrame& frame, std::int64_t time) const
{
    // Tables tell when frames are decoded.
    const bool isShownAtOnce = m_codec->has_b_frames == 0 && frame.pkt_dts == frame.pts;
    if (!isShownAtOnce || !Tracks::tableReachesBeyond(m_stream, time))
        return false;
    const auto end = Tracks::endOfSample(m_stream, frame.pts);
    return end && *end > time;
}

bool FrameDecoder::hasNewKeyFrame(std::int64_t time) const
{
    const AVIndexEntry* const key =
        avformat_index_get_entry_from_timestamp(&m_stream, time, AVSEEK_FLAG_BACKWARD);
    return key && key->timestamp > m_lastTime;
}

bool FrameDecoder::seek(std::int64_t time)
{
    avcodec_flush_buffers(m_codec.get());
    m_firstTime = INT64_MIN;
    m_lastTime = INT64_MIN;
    m_lastShown = time;
    m_closest = INT64_MIN;
    return av_seek_frame(&m_file, m_stream.index, time, AVSEEK_FLAG_BACKWARD) >= 0;
}
