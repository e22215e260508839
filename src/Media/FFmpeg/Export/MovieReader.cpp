#include "Media/FFmpeg/Export/MovieReader.h"

#include "Media/FFmpeg/Export/MovieWriter.h"
#include "Media/FFmpeg/Tracks.h"

#include <algorithm>
#include <cstring>
#include <utility>

MovieReader::MovieReader(std::string path, std::unique_ptr<VideoFile> file, AVStream& picture,
                         const Patience& patience)
    : m_path(std::move(path))
    , m_patience(patience)
    , m_file(std::move(file))
    , m_picture(picture)
    , m_sound(Tracks::sound(m_file->context()))
{
}

Result<std::unique_ptr<MovieReader>> MovieReader::open(const std::string& path,
                                                       const Patience& patience)
{
    auto file = VideoFile::open(path, patience);
    if (!file)
        return file.failure();
    AVStream* const picture = Tracks::picture((*file)->context());
    if (!picture)
        return noPictureIn(path);
    if (!MovieWriter::canHold(*picture->codecpar))
        return Failure{"an MP4 cannot hold the video of " + path};
    return std::unique_ptr<MovieReader>(
        new MovieReader(path, std::move(*file), *picture, patience));
}

void MovieReader::readOnly(const AVStream* wanted, const AVStream* alsoWanted)
{
    Tracks::readOnly(m_file->context(), wanted, alsoWanted);
}

bool MovieReader::hasDecodingTimes() const
{
    return std::strstr(m_file->context().iformat->name, "matroska") == nullptr;
}

std::size_t MovieReader::pictureDelay(const AVPacket& key) const
{
    const AVCodec* const codec = avcodec_find_decoder(m_picture.codecpar->codec_id);
    const Av::Codec context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context || avcodec_parameters_to_context(context.get(), m_picture.codecpar) < 0)
        return 0;
    context->thread_count = 1;
    if (avcodec_open2(context.get(), codec, nullptr) < 0 ||
        avcodec_send_packet(context.get(), &key) < 0)
        return 0;
    return static_cast<std::size_t>(std::max(context->has_b_frames, 0));
}

std::int64_t MovieReader::soundDuration() const
{
    if (!m_sound)
        return 0;
    const std::int64_t whole = m_file->context().duration; // of the longest track
    if (m_sound->duration > 0 || whole <= 0)
        return std::max<std::int64_t>(m_sound->duration, 0);
    return av_rescale_q(whole, {1, AV_TIME_BASE}, m_sound->time_base);
}

bool MovieReader::seek(std::int64_t time)
{
    return av_seek_frame(&m_file->context(), m_picture.index, time, AVSEEK_FLAG_BACKWARD) >= 0;
}

bool MovieReader::read(AVPacket& packet)
{
    while (!m_patience.isOver()) {
        av_packet_unref(&packet);
        const int error = av_read_frame(&m_file->context(), &packet);
        if (error == AVERROR(EAGAIN))
            continue;
        if (error < 0)
            return false;
        // Half a packet is where the file is broken off.
        if ((packet.flags & AV_PKT_FLAG_CORRUPT) != 0 || packet.size == 0)
            continue;
        // What FFmpeg says of fragments is a guess or nothing, and the last sample would be lost.
        const bool isPicture = packet.stream_index == m_picture.index;
        if (packet.pts == packet.dts && hasDecodingTimes()) {
            const auto end = Tracks::endOfSample(isPicture ? m_picture : *m_sound, packet.dts);
            packet.duration = end ? *end - packet.dts : packet.duration;
        }
        return true;
    }
    return false;
}
