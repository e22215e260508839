#include "Media/FFmpeg/AllocationLimit.h"

#include <algorithm>
#include <mutex>
#include <set>

extern "C" {
#include <libavutil/mem.h>
}

namespace {

/// Of the index, for each byte of a file. The table that is made for an MP4 grows by doubling and
/// takes up to 128 bytes a frame, one that is read 26; no frame of ours, with its entry in the
/// file's own table, is smaller than 30.
constexpr std::int64_t bytesForAByte = 8;
/// Three days of 60 frames a second.
constexpr std::int64_t highest = std::int64_t{1} << 30;

std::mutex mutex; // for the set, and that FFmpeg knows its highest

/// Never destroyed: work may go on at the end of the program.
std::multiset<std::int64_t>& limits()
{
    static auto& all = *new std::multiset<std::int64_t>;
    return all;
}

void apply()
{
    static std::int64_t highestOfAll = AllocationLimit::lowest;
    if (!limits().empty())
        highestOfAll = std::max(highestOfAll, *limits().rbegin());
    const std::int64_t most = limits().empty() ? highestOfAll : *limits().rbegin();
    av_max_alloc(static_cast<std::size_t>(most));
}

} // namespace

AllocationLimit::AllocationLimit(std::int64_t fileSize)
    : m_bytes(std::clamp(std::min(fileSize, highest) * bytesForAByte, lowest, highest))
{
    const std::lock_guard lock(mutex);
    limits().insert(m_bytes);
    apply();
}

AllocationLimit::~AllocationLimit()
{
    const std::lock_guard lock(mutex);
    limits().erase(limits().find(m_bytes));
    apply();
}
