#include "Movie/Encode/MovieStream.h"

#include "Media/Av/Text.h"

#include <utility>

namespace {

constexpr int bufferSize = 1 << 16;

Failure cannotPack(int error)
{
    return {"cannot make a movie of it: " + Av::text(error)};
}

PossibleFailure addTrack(AVFormatContext& output, const AVCodecParameters& parameters, int ticks)
{
    AVStream* const track = avformat_new_stream(&output, nullptr);
    if (!track)
        return cannotPack(AVERROR(ENOMEM));
    track->time_base = {1, ticks};
    const int error = avcodec_parameters_copy(track->codecpar, &parameters);
    if (error < 0)
        return cannotPack(error);
    return std::nullopt;
}

} // namespace

Result<MovieStream> MovieStream::create(const AVCodecParameters& video, int videoTicks,
                                        const AVCodecParameters* sound, int soundTicks)
{
    MovieStream stream;
    if (PossibleFailure failure = stream.begin(video, videoTicks, sound, soundTicks))
        return *failure;
    return stream;
}

PossibleFailure MovieStream::begin(const AVCodecParameters& video, int videoTicks,
                                   const AVCodecParameters* sound, int soundTicks)
{
    m_videoTicks = videoTicks;
    m_soundTicks = soundTicks;
    m_bytes = std::make_unique<std::vector<std::uint8_t>>();
    m_io.reset(avio_alloc_context(static_cast<unsigned char*>(av_malloc(bufferSize)), bufferSize, 1,
                                  m_bytes.get(), nullptr, write, nullptr));
    AVFormatContext* output = nullptr;
    int error = avformat_alloc_output_context2(&output, nullptr, "mov", nullptr);
    if (error < 0)
        return cannotPack(error);
    m_output.reset(output);
    output->pb = m_io.get();
    output->flags |= AVFMT_FLAG_CUSTOM_IO;
    output->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;
    if (PossibleFailure failure = addTrack(*output, video, videoTicks))
        return failure;
    if (sound) {
        if (PossibleFailure failure = addTrack(*output, *sound, soundTicks))
            return failure;
    }
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "frag_custom+empty_moov+default_base_moof", 0);
    error = avformat_write_header(output, &options);
    av_dict_free(&options);
    if (error < 0)
        return cannotPack(error);
    return std::nullopt;
}

int MovieStream::write(void* bytes, std::uint8_t* more, int count)
{
    auto& all = *static_cast<std::vector<std::uint8_t>*>(bytes);
    all.insert(all.end(), more, more + count);
    return count;
}

PossibleFailure MovieStream::addVideo(AVPacket& packet)
{
    return add(packet, 0, m_videoTicks);
}

PossibleFailure MovieStream::addSound(AVPacket& packet)
{
    return add(packet, 1, m_soundTicks);
}

PossibleFailure MovieStream::add(AVPacket& packet, int track, int ticks)
{
    AVStream& stream = *m_output->streams[track];
    packet.stream_index = track;
    av_packet_rescale_ts(&packet, {1, ticks}, stream.time_base);
    const int error = av_write_frame(m_output.get(), &packet);
    if (error < 0)
        return cannotPack(error);
    return std::nullopt;
}

PossibleFailure MovieStream::closeFragment()
{
    const int error = av_write_frame(m_output.get(), nullptr);
    if (error < 0)
        return cannotPack(error);
    avio_flush(m_io.get());
    return std::nullopt;
}

std::vector<std::uint8_t> MovieStream::take()
{
    return std::exchange(*m_bytes, {});
}
