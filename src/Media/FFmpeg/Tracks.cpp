#include "Media/FFmpeg/Tracks.h"

namespace {

bool isDefault(const AVStream& stream)
{
    return (stream.disposition & AV_DISPOSITION_DEFAULT) != 0;
}

AVStream* firstOf(AVFormatContext& file, AVMediaType type)
{
    AVStream* found = nullptr;
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        AVStream* const stream = file.streams[i];
        const bool isMeant = stream->codecpar->codec_type == type &&
                             (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
        if (isMeant && (!found || (isDefault(*stream) && !isDefault(*found))))
            found = stream;
    }
    return found;
}

} // namespace

AVStream* Tracks::picture(AVFormatContext& file)
{
    return firstOf(file, AVMEDIA_TYPE_VIDEO);
}

AVStream* Tracks::sound(AVFormatContext& file)
{
    return firstOf(file, AVMEDIA_TYPE_AUDIO);
}

std::optional<std::int64_t> Tracks::endOfSample(AVStream& track, std::int64_t time)
{
    const int number = av_index_search_timestamp(&track, time, AVSEEK_FLAG_ANY);
    if (number < 0 || avformat_index_get_entry(&track, number)->timestamp != time)
        return {};
    const AVIndexEntry* const next = avformat_index_get_entry(&track, number + 1);
    const std::int64_t end = next ? next->timestamp : track.duration;
    return end > time ? std::optional(end) : std::nullopt;
}

bool Tracks::tableReachesBeyond(AVStream& track, std::int64_t time)
{
    const int count = avformat_index_get_entries_count(&track);
    return count > 0 && track.nb_frames == count &&
           avformat_index_get_entry(&track, count - 1)->timestamp > time;
}

void Tracks::readOnly(AVFormatContext& file, const AVStream* wanted, const AVStream* alsoWanted)
{
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        AVStream* const stream = file.streams[i];
        const bool isRead = stream == wanted || stream == alsoWanted;
        stream->discard = isRead ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
}
