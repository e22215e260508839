#include "unit/Media/PlayedMovie.h"

#include "Media/Av/Handles.h"
#include "Media/Av/Text.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>

extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

namespace {

void check(int error, const std::string& what)
{
    if (error < 0)
        throw std::runtime_error(what + ": " + Av::text(error));
}

double seconds(std::int64_t ticks, AVRational base)
{
    return static_cast<double>(ticks) * av_q2d(base);
}

Av::Codec decoderOf(const AVStream& stream)
{
    const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
    Av::Codec context(avcodec_alloc_context3(codec));
    check(avcodec_parameters_to_context(context.get(), stream.codecpar), "parameters");
    context->pkt_timebase = stream.time_base;
    context->thread_count = 1;
    check(avcodec_open2(context.get(), codec, nullptr), "decoder");
    return context;
}

void addFrame(PlayedMovie& movie, const AVFrame& frame, const AVStream& stream)
{
    const auto at = [&](int x, int y) { return int{frame.data[0][y * frame.linesize[0] + x]}; };
    std::string luma;
    for (int y = 0; y < frame.height; ++y) {
        const std::uint8_t* const row = frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0];
        luma.append(row, row + frame.width);
    }
    movie.frames.push_back({seconds(frame.best_effort_timestamp, stream.time_base),
                            at(frame.width / 2, frame.height / 2), at(0, frame.height / 2),
                            at(frame.width / 2, 0), std::move(luma)});
}

void addSound(PlayedMovie& movie, const AVFrame& frame, const AVStream& stream)
{
    movie.soundRate = frame.sample_rate;
    const auto start = static_cast<std::ptrdiff_t>(
        std::llround(seconds(frame.best_effort_timestamp, stream.time_base) * frame.sample_rate));
    const auto samplesOf = [&](int channel) {
        const void* const plane = frame.data[channel];
        return static_cast<const float*>(plane);
    };
    const float* const left = samplesOf(0);
    const float* const right = samplesOf(frame.ch_layout.nb_channels > 1 ? 1 : 0);
    const auto end =
        static_cast<std::size_t>(std::max<std::ptrdiff_t>(start + frame.nb_samples, 0));
    movie.samples.resize(std::max(movie.samples.size(), end));
    movie.rightSamples.resize(movie.samples.size());
    for (std::ptrdiff_t i = std::max<std::ptrdiff_t>(-start, 0); i < frame.nb_samples; ++i) {
        movie.samples[static_cast<std::size_t>(start + i)] = left[i];
        movie.rightSamples[static_cast<std::size_t>(start + i)] = right[i];
    }
}

void decode(PlayedMovie& movie, AVCodecContext& codec, const AVPacket* packet,
            const AVStream& stream)
{
    check(avcodec_send_packet(&codec, packet), "packet");
    const Av::Frame frame(av_frame_alloc());
    while (avcodec_receive_frame(&codec, frame.get()) >= 0) {
        if (codec.codec_type == AVMEDIA_TYPE_VIDEO)
            addFrame(movie, *frame, stream);
        else
            addSound(movie, *frame, stream);
    }
}

std::string coloursOf(const AVCodecParameters& track)
{
    return std::string(av_color_range_name(track.color_range)) + " " +
           av_color_primaries_name(track.color_primaries) + " " +
           av_color_transfer_name(track.color_trc) + " " + av_color_space_name(track.color_space);
}

PlayedMovie read(const std::string& path, bool isDecoded)
{
    PlayedMovie movie;
    const std::string bytes = contentOf(path);
    movie.hasIndexInFront = bytes.find("moov") < bytes.find("mdat");
    AVFormatContext* opened = nullptr;
    check(avformat_open_input(&opened, path.c_str(), nullptr, nullptr), path);
    const Av::Input file(opened);
    check(avformat_find_stream_info(opened, nullptr), path);
    std::map<int, Av::Codec> codecs;
    for (unsigned i = 0; i < file->nb_streams; ++i) {
        const AVStream& stream = *file->streams[i];
        const AVCodecParameters& kind = *stream.codecpar;
        const bool isPicture = kind.codec_type == AVMEDIA_TYPE_VIDEO;
        PlayedMovie::Track& track = isPicture ? movie.picture : movie.sound;
        track.codec = avcodec_get_name(kind.codec_id);
        track.duration = seconds(stream.duration, stream.time_base);
        if (isDecoded)
            codecs[static_cast<int>(i)] = decoderOf(stream);
        if (!isPicture)
            continue;
        movie.width = kind.width;
        movie.height = kind.height;
        movie.colours = coloursOf(kind);
        const std::uint8_t* const matrix =
            av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
        const void* const numbers = matrix;
        movie.turn =
            matrix ? av_display_rotation_get(static_cast<const std::int32_t*>(numbers)) : 0;
    }
    const Av::Packet packet(av_packet_alloc());
    for (; av_read_frame(opened, packet.get()) >= 0; av_packet_unref(packet.get())) {
        if ((packet->flags & AV_PKT_FLAG_CORRUPT) != 0)
            continue;
        const AVStream& stream = *file->streams[packet->stream_index];
        const bool isPicture = stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
        (isPicture ? movie.picture : movie.sound)
            .packets.push_back({seconds(packet->pts, stream.time_base),
                                seconds(packet->dts, stream.time_base),
                                (packet->flags & AV_PKT_FLAG_KEY) != 0,
                                std::string(packet->data, packet->data + packet->size)});
        if (isDecoded)
            decode(movie, *codecs[packet->stream_index], packet.get(), stream);
    }
    for (const auto& [index, codec] : codecs)
        decode(movie, *codec, nullptr, *file->streams[index]);
    return movie;
}

} // namespace

PlayedMovie PlayedMovie::packetsOf(const std::string& path)
{
    return read(path, false);
}

PlayedMovie PlayedMovie::of(const std::string& path)
{
    return read(path, true);
}

std::vector<int> PlayedMovie::greys() const
{
    std::vector<int> all;
    for (const Frame& frame : frames)
        all.push_back(frame.grey);
    return all;
}

int PlayedMovie::loudestBetween(int from, int to) const
{
    const auto begin = samples.begin() + std::min<std::ptrdiff_t>(from, std::ssize(samples));
    const auto end = samples.begin() + std::min<std::ptrdiff_t>(to, std::ssize(samples));
    const auto louder = [](float a, float b) { return std::abs(a) < std::abs(b); };
    return static_cast<int>(std::max_element(begin, end, louder) - samples.begin());
}
