#include "Media/FFmpeg/Export/Segment.h"

#include "Media/FFmpeg/Tracks.h"
#include "Media/FFmpeg/VideoFile.h"

#include <algorithm>
#include <optional>

namespace {

/// When a track ends, by the container's table: what would lie beyond the file's end is not there.
/// In the track's ticks; absent when there is nothing of it. `keys`, which are added, may be null.
std::optional<std::int64_t> endOf(AVStream& track, std::int64_t fileSize,
                                  std::vector<std::int64_t>* keys)
{
    std::optional<std::int64_t> end;
    std::int64_t begin = 0;
    const int count = avformat_index_get_entries_count(&track);
    for (int i = 0; i < count; ++i) {
        const AVIndexEntry& entry = *avformat_index_get_entry(&track, i);
        const bool isKey = (entry.flags & AVINDEX_KEYFRAME) != 0;
        const bool isMissing = entry.pos + entry.size > fileSize;
        const bool isUnusable = keys && !end && !isKey; // it refers to what is not there
        if (isMissing || isUnusable || (entry.flags & AVINDEX_DISCARD_FRAME) != 0)
            continue;
        if (!end)
            begin = entry.timestamp;
        if (keys && isKey)
            keys->push_back(entry.timestamp);
        // The table says when pictures are decoded. Those that refer to later ones are decoded from
        // before 0 on, and shown from 0 on.
        const std::int64_t early = keys ? std::min<std::int64_t>(begin, 0) : 0;
        const bool isLast = i + 1 == count;
        end = std::max(isLast ? track.duration
                              : avformat_index_get_entry(&track, i + 1)->timestamp - early,
                       entry.timestamp - early + 1);
    }
    return end;
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
    segment.fileSize = (*file)->size();
    segment.ticks = picture->time_base;
    const auto shownUntil = endOf(*picture, (*file)->size(), &segment.keys);
    if (!shownUntil)
        return Failure{"there is no picture in " + path};
    segment.duration = movieTicks(*shownUntil, segment.ticks);
    AVStream* const sound = Tracks::sound((*file)->context());
    const auto heardUntil = sound ? endOf(*sound, (*file)->size(), nullptr) : std::nullopt;
    segment.hasSound = heardUntil && *heardUntil > 0;
    if (segment.hasSound)
        segment.duration = std::max(segment.duration, movieTicks(*heardUntil, sound->time_base));
    return segment;
}
