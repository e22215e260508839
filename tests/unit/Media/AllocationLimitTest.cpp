#include "Media/FFmpeg/AllocationLimit.h"

#include "Media/FFmpeg/VideoFile.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/Videos.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

extern "C" {
#include <libavutil/mem.h>
}

namespace {

constexpr std::int64_t mega = 1 << 20;

bool canAllocate(std::int64_t bytes)
{
    void* memory = av_malloc(static_cast<std::size_t>(bytes)); // of which nothing is touched
    const bool worked = memory != nullptr;
    av_freep(&memory);
    return worked;
}

} // namespace

TEST(AllocationLimit, IsLowForSmallFiles)
{
    const AllocationLimit limit(100);
    EXPECT_TRUE(canAllocate(127 * mega));
    EXPECT_FALSE(canAllocate(129 * mega));
}

TEST(AllocationLimit, GrowsWithTheFileButNotForEver)
{
    {
        const AllocationLimit limit(100 * mega);
        EXPECT_TRUE(canAllocate(799 * mega));
        EXPECT_FALSE(canAllocate(801 * mega));
    }
    const AllocationLimit limit(INT64_MAX);
    EXPECT_TRUE(canAllocate(1023 * mega));
    EXPECT_FALSE(canAllocate(1025 * mega));
}

TEST(AllocationLimit, IsThatOfAFileWhileItIsOpen)
{
    const TemporaryFolder folder;
    const std::string film = folder / "film.mp4";
    Videos::make({"-f", "lavfi", "-i", "color=gray:s=32x32:d=0.1", film});
    std::filesystem::resize_file(film, 100 * mega);
    Patience endless(std::chrono::hours(1), {});
    endless.begin();
    const auto file = VideoFile::open(film, endless);
    ASSERT_TRUE(file) << file.failure().message;
    EXPECT_TRUE(canAllocate(799 * mega));
}

TEST(AllocationLimit, IsTheHighestOfThoseThatLive)
{
    std::optional<AllocationLimit> large(30 * mega);
    {
        const AllocationLimit small(1);
        EXPECT_TRUE(canAllocate(239 * mega));
    }
    EXPECT_TRUE(canAllocate(239 * mega));
    large.reset();
    EXPECT_TRUE(canAllocate(239 * mega)); // who plays the large file
    const AllocationLimit small(1);
    EXPECT_FALSE(canAllocate(129 * mega));
}
