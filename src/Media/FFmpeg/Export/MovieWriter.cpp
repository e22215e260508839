#include "Media/FFmpeg/Export/MovieWriter.h"

#include "Media/Av/H264Encoder.h"
#include "Media/Av/Text.h"
#include "Media/FFmpeg/Export/ExportPatience.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace {

constexpr int bufferSize = 1 << 18;

} // namespace

Result<std::unique_ptr<MovieWriter>> MovieWriter::create(const std::string& path)
{
    auto file = OutputFile::create(path);
    if (!file)
        return file.failure();
    std::unique_ptr<MovieWriter> writer(new MovieWriter(std::move(*file)));
    if (const PossibleFailure failure = writer->open())
        return *failure;
    return writer;
}

PossibleFailure MovieWriter::open()
{
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
    m_io.reset(avio_alloc_context(buffer, bufferSize, 1, &m_end, nullptr, write, seek));
    AVFormatContext* context = nullptr;
    const int error = avformat_alloc_output_context2(&context, nullptr, "mp4", nullptr);
    m_output.reset(context);
    if (!buffer || !m_io || error < 0)
        return Failure{"there is no memory left"};
    m_io->min_packet_size = bufferSize; // or else every packet would be written by itself
    context->pb = m_io.get();
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->opaque = this;
    // To bring the index to the front it reads what it has written.
    context->io_open = openAgain;
    context->io_close2 = closeAgain;
    // What begins before 0 gets an edit list.
    context->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;
    return {};
}

bool MovieWriter::canHold(const AVCodecParameters& parameters)
{
    const AVOutputFormat* const format = av_guess_format("mp4", nullptr, nullptr);
    return format && avformat_query_codec(format, parameters.codec_id, FF_COMPLIANCE_NORMAL) == 1;
}

AVStream* MovieWriter::addTrack(const AVCodecParameters& parameters, AVRational ticks)
{
    AVStream* const track = avformat_new_stream(m_output.get(), nullptr);
    if (!track || avcodec_parameters_copy(track->codecpar, &parameters) < 0)
        return nullptr;
    // A name that MP4 has for this codec as well is kept.
    const AVCodecTag* const* const names = m_output->oformat->codec_tag;
    if (av_codec_get_id(names, parameters.codec_tag) != parameters.codec_id)
        track->codecpar->codec_tag = 0;
    track->time_base = ticks;
    m_tracks.push_back({ticks});
    return track;
}

AVStream* MovieWriter::addCopyOf(const AVStream& track)
{
    AVStream* const copy = addTrack(*track.codecpar, track.time_base);
    if (!copy)
        return nullptr;
    copy->disposition = track.disposition;
    copy->sample_aspect_ratio = track.sample_aspect_ratio;
    av_dict_copy(&copy->metadata, track.metadata, 0);
    for (int i = 0; i < track.nb_side_data; ++i) {
        const AVPacketSideData& data = track.side_data[i]; // how it is turned, among others
        std::uint8_t* const place = av_stream_new_side_data(copy, data.type, data.size);
        if (!place)
            return nullptr;
        std::copy_n(data.data, data.size, place);
    }
    return copy;
}

PossibleFailure MovieWriter::begin(std::optional<std::int64_t> indexRoom)
{
    AVDictionary* options = nullptr;
    if (indexRoom)
        av_dict_set_int(&options, "moov_size", *indexRoom, 0);
    else
        av_dict_set(&options, "movflags", "+faststart", 0);
    // In which the beginnings of tracks are given: those of sound are exact to half a sample.
    av_dict_set_int(&options, "movie_timescale", H264Encoder::ticksASecond, 0);
    const int error = avformat_write_header(m_output.get(), &options);
    av_dict_free(&options);
    if (error < 0)
        return failureOf(error);
    return {};
}

PossibleFailure MovieWriter::add(AVPacket& packet, const AVStream& track)
{
    Track& state = m_tracks[static_cast<std::size_t>(track.index)];
    packet.stream_index = track.index;
    packet.pos = -1;
    av_packet_rescale_ts(&packet, state.ticks, track.time_base);
    // Damaged files have times that stand still.
    packet.dts = std::max(packet.dts, state.lastTime + 1);
    packet.pts = std::max(packet.pts, packet.dts);
    state.lastTime = packet.dts;
    const int error = av_interleaved_write_frame(m_output.get(), &packet);
    if (error < 0)
        return failureOf(error);
    return m_writeFailure;
}

PossibleFailure MovieWriter::publish(const Patience& patience)
{
    if (PossibleFailure failure = finish())
        return failure;
    if (PossibleFailure failure = ExportPatience::cutShort(patience))
        return failure;
    return m_file->publish();
}

PossibleFailure MovieWriter::finish()
{
    const int error = av_write_trailer(m_output.get());
    avio_flush(m_io.get());
    if (error < 0 || m_writeFailure)
        return failureOf(error);
    return {};
}

Failure MovieWriter::failureOf(int error) const
{
    return m_writeFailure ? *m_writeFailure : Failure{"cannot make an MP4: " + Av::text(error)};
}

int MovieWriter::write(void* place, std::uint8_t* bytes, int size)
{
    Place& at = *static_cast<Place*>(place);
    MovieWriter& writer = at.writer;
    if (!writer.m_writeFailure)
        writer.m_writeFailure =
            writer.m_file->write({bytes, static_cast<std::size_t>(size)}, at.position);
    if (writer.m_writeFailure)
        return AVERROR(EIO);
    at.position += size;
    return size;
}

int MovieWriter::read(void* place, std::uint8_t* bytes, int size)
{
    Place& at = *static_cast<Place*>(place);
    const std::int64_t count =
        at.writer.m_file->read({bytes, static_cast<std::size_t>(size)}, at.position);
    if (count < 0)
        return AVERROR(errno);
    at.position += count;
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

std::int64_t MovieWriter::seek(void* place, std::int64_t offset, int whence)
{
    Place& at = *static_cast<Place*>(place);
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return at.writer.m_file->size();
    case SEEK_SET:
        break;
    case SEEK_CUR:
        offset += at.position;
        break;
    case SEEK_END:
        offset += at.writer.m_file->size();
        break;
    default:
        return AVERROR(EINVAL);
    }
    if (offset < 0)
        return AVERROR(EINVAL);
    return at.position = offset;
}

int MovieWriter::openAgain(AVFormatContext* context, AVIOContext** io, const char*, int flags,
                           AVDictionary**)
{
    if ((flags & AVIO_FLAG_WRITE) != 0)
        return AVERROR(EPERM);
    auto& writer = *static_cast<MovieWriter*>(context->opaque);
    writer.m_again.position = 0;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
    *io = avio_alloc_context(buffer, bufferSize, 0, &writer.m_again, read, nullptr, seek);
    return buffer && *io ? 0 : AVERROR(ENOMEM);
}

int MovieWriter::closeAgain(AVFormatContext*, AVIOContext* io)
{
    Av::Free()(io);
    return 0;
}
