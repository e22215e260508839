#include "Media/FFmpeg/Export/IndexRoom.h"

#include <algorithm>
#include <vector>

namespace {

constexpr std::int64_t headers = 8 << 10;      // of the file and its tracks
constexpr std::int64_t chunkBytes = 512 << 10; // two chunks in a row have twice as many

/// What ISO/IEC 14496-12, 8.6 and 8.7, has in tables for each sample, chunk, or change.
struct Tables {
    std::int64_t samples = 0;
    std::int64_t keys = 0;
    std::int64_t lengths = 0; // changes of how long a sample lasts
    std::int64_t bytes = 0;   // of the samples
    bool isReordered = false;

    std::int64_t size(std::int64_t chunks) const
    {
        const std::int64_t shifts = isReordered ? 8 * samples : 0;
        return 4 * samples + shifts + samples + 4 * keys + 8 * (lengths + 2) + (12 + 8) * chunks;
    }
};

Tables tablesOf(AVStream& track)
{
    Tables tables;
    const int count = avformat_index_get_entries_count(&track);
    tables.samples = count;
    tables.isReordered = track.codecpar->video_delay > 0;
    std::int64_t lastLength = -1;
    for (int i = 0; i < count; ++i) {
        const AVIndexEntry& entry = *avformat_index_get_entry(&track, i);
        tables.keys += (entry.flags & AVINDEX_KEYFRAME) != 0 ? 1 : 0;
        tables.bytes += entry.size;
        if (i + 1 == count)
            break;
        const std::int64_t length =
            avformat_index_get_entry(&track, i + 1)->timestamp - entry.timestamp;
        tables.lengths += length == lastLength ? 0 : 1;
        lastLength = length;
    }
    return tables;
}

} // namespace

std::optional<std::int64_t> indexRoomFor(std::initializer_list<AVStream*> tracks)
{
    std::int64_t room = headers;
    std::int64_t fewest = INT64_MAX; // samples of a track
    std::vector<Tables> all;
    for (AVStream* const track : tracks) {
        if (!track)
            continue;
        all.push_back(tablesOf(*track));
        if (all.back().samples == 0)
            return {};
        fewest = std::min(fewest, all.back().samples);
        room += std::int64_t{4} * track->codecpar->extradata_size;
    }
    for (const Tables& tables : all) {
        // A chunk ends where the other track goes on, or when it is large.
        const std::int64_t byTurns = all.size() == 1 ? 1 : fewest + 1;
        const std::int64_t bySize = tables.bytes / chunkBytes + 1;
        room += tables.size(std::min(tables.samples, byTurns + bySize));
    }
    return room;
}
