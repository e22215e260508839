#include "Png/Deflate.h"

#include "Png/LastBlock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <set>
#include <span>
#include <string>
#include <vector>

#define ZLIB_CONST
#include <zlib.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes allEqual(std::size_t size)
{
    return Bytes(size, 0x5a);
}

Bytes noise(std::size_t size)
{
    std::mt19937 random(static_cast<std::uint32_t>(size));
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

/// Few values, so that codes of several lengths and matches mix.
Bytes letters(std::size_t size)
{
    std::mt19937 random(static_cast<std::uint32_t>(size));
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] {
        return static_cast<std::uint8_t>("etaoinshrdlu  \n"[random() % 3 * (random() % 8)]);
    });
    return bytes;
}

/// Stretches of each kind, longer than one block.
Bytes changing(std::size_t size)
{
    const Bytes kinds[] = {noise(size), letters(size), allEqual(size)};
    Bytes bytes(size);
    for (std::size_t at = 0; at < size; ++at)
        bytes[at] = kinds[at / 40000 % 3][at];
    return bytes;
}

using Maker = Bytes (*)(std::size_t);
constexpr Maker makers[] = {allEqual, noise, letters, changing};

struct Inflated {
    Bytes bytes;
    std::multiset<int> joints; ///< Where empty blocks start within a byte: a bit, 0 to 7.
};

/// Reads a whole zlib stream, checksum and all, block by block.
Inflated inflated(std::span<const std::uint8_t> stream, std::size_t size)
{
    Inflated result{Bytes(size + 1), {}};
    z_stream state{};
    state.next_in = stream.data();
    state.avail_in = static_cast<uInt>(stream.size());
    state.next_out = result.bytes.data();
    state.avail_out = static_cast<uInt>(result.bytes.size());
    EXPECT_EQ(inflateInit(&state), Z_OK);
    int status = Z_OK;
    uLong written = 0;
    int startBit = -1; // before the first block, whose start is no joint
    while (status == Z_OK) {
        status = inflate(&state, Z_BLOCK);
        const bool isBetweenBlocks = status == Z_OK && (state.data_type & 128) != 0;
        if (!isBetweenBlocks)
            continue;
        if (startBit >= 0 && state.total_out == written && state.total_in > 2)
            result.joints.insert(startBit);
        startBit = (8 - (state.data_type & 7)) % 8;
        written = state.total_out;
    }
    EXPECT_EQ(status, Z_STREAM_END) << (state.msg ? state.msg : "");
    EXPECT_EQ(state.avail_in, 0U) << "something comes after the stream";
    result.bytes.resize(state.total_out);
    inflateEnd(&state);
    return result;
}

TEST(Deflate, EveryStreamInflatesToTheData)
{
    for (const Maker maker : makers) {
        for (const std::size_t size :
             {0, 1, 2, 3, 4, 5, 10, 100, 1000, 65535, 65536, 300'001, 900'000}) {
            const Bytes data = maker(size);
            for (const int level : {1, 4}) {
                for (const unsigned workers : {1U, 2U, 3U, 4U}) {
                    SCOPED_TRACE(testing::Message() << size << " bytes, level " << level << ", "
                                                    << workers << " workers");
                    const Png::Buffer stream = Png::zlibStream(data, level, workers);
                    ASSERT_TRUE(inflated(stream.bytes(), size).bytes == data);
                }
            }
        }
    }
}

TEST(Deflate, PartsAreJoinedWhereverInAByteTheyEnd)
{
    std::set<int> seen;
    for (std::size_t size = 200; size < 400; ++size) {
        const Bytes data = letters(size);
        const Inflated result = inflated(Png::zlibStream(data, 4, 2).bytes(), size);
        ASSERT_TRUE(result.bytes == data) << size;
        ASSERT_EQ(result.joints.size(), 1U) << size;
        seen.insert(*result.joints.begin());
    }
    EXPECT_EQ(seen, (std::set<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(Deflate, AWorkerMoreIsAJointMore)
{
    const Bytes data = letters(100'000);
    for (const unsigned workers : {1U, 2U, 3U, 4U}) {
        const Png::Buffer stream = Png::zlibStream(data, 4, workers);
        EXPECT_EQ(inflated(stream.bytes(), data.size()).joints.size(), workers - 1);
    }
}

TEST(Deflate, PartsCostLittle)
{
    const Bytes data = letters(1'000'000);
    const std::size_t whole = Png::zlibStream(data, 4, 1).size();
    EXPECT_LT(Png::zlibStream(data, 4, 2).size(), whole + whole / 100);
}

/// The blocks of one stored byte each, the last of which says that it is the last.
Bytes storedBlocks(std::size_t count)
{
    Bytes stream;
    for (std::size_t block = 1; block <= count; ++block) {
        const std::uint8_t isLast = block == count;
        stream.insert(stream.end(), {isLast, 1, 0, 0xfe, 0xff, 'a'});
    }
    return stream;
}

TEST(LastBlock, IsFound)
{
    for (const std::size_t count : {1, 2, 3, 1000}) {
        const Bytes stream = storedBlocks(count);
        const auto last = Png::lastBlockOf(stream);
        ASSERT_TRUE(last) << count;
        EXPECT_EQ(last->start, (count - 1) * 6 * 8) << count;
        EXPECT_EQ(last->end, count * 6 * 8) << count;
    }
    // Two empty blocks of fixed codes, ten bits each: the second is the last.
    const auto last = Png::lastBlockOf(Bytes{0x02, 0x0c, 0x00});
    ASSERT_TRUE(last);
    EXPECT_EQ(last->start, 10U);
    EXPECT_EQ(last->end, 20U);
}

TEST(LastBlock, IsAbsentFromABrokenStream)
{
    Bytes endless = storedBlocks(3);
    endless[12] = 0;
    EXPECT_FALSE(Png::lastBlockOf(endless));
    Bytes cut = storedBlocks(3);
    cut.pop_back();
    EXPECT_FALSE(Png::lastBlockOf(cut));
    EXPECT_FALSE(Png::lastBlockOf(Bytes{0x07})); // a type of block that does not exist
    EXPECT_FALSE(Png::lastBlockOf({}));
}

} // namespace
