#include "Media/FFmpeg/Export/Segment.h"

#include "Media/FFmpeg/Tracks.h"
#include "Media/FFmpeg/VideoFile.h"

#include <algorithm>

namespace {

/// What a file has of a track, in the track's ticks.
struct Extent {
    bool isEmpty = true;
    std::int64_t begin = 0;
    std::int64_t end = 0;
};

/// By the container's table; what would lie beyond the file's end is not there. `keys` may be null.
Extent extentOf(AVStream& stream, std::int64_t fileSize, std::vector<std::int64_t>* keys)
{
    Extent extent;
    const int count = avformat_index_get_entries_count(&stream);
    for (int i = 0; i < count; ++i) {
        const AVIndexEntry& entry = *avformat_index_get_entry(&stream, i);
        const bool isKey = (entry.flags & AVINDEX_KEYFRAME) != 0;
        const bool isMissing = entry.pos + entry.size > fileSize;
        const bool isUnusable = keys && extent.isEmpty && !isKey; // it refers to what is not there
        if (isMissing || isUnusable || (entry.flags & AVINDEX_DISCARD_FRAME) != 0)
            continue;
        const bool isLast = i + 1 == count;
        const std::int64_t next =
            isLast ? stream.duration : avformat_index_get_entry(&stream, i + 1)->timestamp;
        if (extent.isEmpty)
            extent.begin = entry.timestamp;
        extent.isEmpty = false;
        extent.end = std::max(next, entry.timestamp + 1);
        if (keys && isKey)
            keys->push_back(entry.timestamp);
    }
    return extent;
}

std::int64_t movieTicks(std::int64_t time, AVRational ticks)
{
    return av_rescale_q(time, ticks, {1, Segment::ticksASecond});
}

} // namespace

Result<Segment> Segment::inspect(const std::string& path, const Patience& patience)
{
    auto file = VideoFile::open(path, patience);
    if (!file)
        return file.failure();
    AVStream* const picture = Tracks::picture((*file)->context());
    if (!picture)
        return Failure{"there is no picture in " + path};
    Segment segment;
    segment.path = path;
    segment.ticks = picture->time_base;
    const Extent shown = extentOf(*picture, (*file)->size(), &segment.keys);
    if (shown.isEmpty)
        return Failure{"there is no picture in " + path};
    // Frames that refer to later ones are decoded before 0 and shown from 0 on.
    segment.duration =
        movieTicks(shown.end - std::min<std::int64_t>(shown.begin, 0), segment.ticks);
    if (AVStream* const sound = Tracks::sound((*file)->context())) {
        const Extent heard = extentOf(*sound, (*file)->size(), nullptr);
        segment.hasSound = !heard.isEmpty && heard.end > 0;
        if (segment.hasSound)
            segment.duration = std::max(segment.duration, movieTicks(heard.end, sound->time_base));
    }
    return segment;
}
