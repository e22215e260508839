#include "Png/Deflate.h"

#include "Png/Adler32.h"
#include "Png/LastBlock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <new>
#include <optional>
#include <random>
#include <set>
#include <span>
#include <string>
#include <vector>

#include <sched.h>
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

/// What becomes of the data in so many parts of about the same size.
Bytes deflated(std::span<const std::uint8_t> data, std::size_t parts, int level, unsigned workers)
{
    const auto start = [&](std::size_t part) { return data.size() * part / parts; };
    const auto bytesOf = [&](std::size_t part, std::uint8_t* scratch) {
        const auto bytes = data.subspan(start(part), start(part + 1) - start(part));
        return std::span<const std::uint8_t>(scratch,
                                             std::copy(bytes.begin(), bytes.end(), scratch));
    };
    const Png::PartedData parted{parts, data.size() / parts + 1, bytesOf};
    Bytes stream;
    for (const Png::Buffer& piece : Png::zlibStream(parted, level, workers))
        stream.insert(stream.end(), piece.bytes().begin(), piece.bytes().end());
    return stream;
}

TEST(Deflate, EveryStreamInflatesToTheData)
{
    for (const Maker maker : makers) {
        for (const std::size_t size :
             {0U, 1U, 2U, 3U, 4U, 5U, 10U, 100U, 1000U, 65535U, 65536U, 65537U, 300'001U, 900'000U})
        {
            const Bytes data = maker(size);
            for (const int level : {1, 4}) {
                for (const std::size_t parts : {1U, 2U, 3U, 10U}) {
                    SCOPED_TRACE(testing::Message()
                                 << size << " bytes, level " << level << ", " << parts << " parts");
                    const Bytes stream = deflated(data, parts, level, 2);
                    ASSERT_TRUE(inflated(stream, size).bytes == data);
                }
            }
        }
    }
}

TEST(Deflate, AnyNumberOfWorkersMakesTheSameStream)
{
    const Bytes data = changing(400'000);
    const Bytes byOne = deflated(data, 7, 4, 1);
    for (const unsigned workers : {2U, 3U, 7U, 20U})
        EXPECT_TRUE(deflated(data, 7, 4, workers) == byOne) << workers;
}

TEST(Deflate, PartsAreMadeAtTheSameTime)
{
    // Ends only if each is begun before the other is made; the run's time limit ends it else.
    const Bytes data = letters(2000);
    std::atomic<int> begun = 0;
    const auto bytesOf = [&](std::size_t part, std::uint8_t*) {
        ++begun;
        while (begun < 2)
            sched_yield();
        return std::span<const std::uint8_t>(data).subspan(part * 1000, 1000);
    };
    EXPECT_EQ(Png::zlibStream({2, 1000, bytesOf}, 4, 2).size(), 2U);
}

TEST(Deflate, OnePartStartsNoThread)
{
    const auto threads = [] {
        const std::filesystem::directory_iterator tasks("/proc/self/task");
        return std::distance(begin(tasks), end(tasks));
    };
    const auto before = threads();
    auto meanwhile = before;
    const auto bytesOf = [&](std::size_t, std::uint8_t*) {
        meanwhile = threads();
        return std::span<const std::uint8_t>();
    };
    Png::zlibStream({1, 0, bytesOf}, 4, 8);
    EXPECT_EQ(meanwhile, before);
}

TEST(Deflate, WhatMakingAPartThrowsArrives)
{
    const auto bytesOf = [](std::size_t part, std::uint8_t*) -> std::span<const std::uint8_t> {
        if (part == 3)
            throw std::bad_alloc();
        return {};
    };
    for (const unsigned workers : {1U, 2U})
        EXPECT_THROW(Png::zlibStream({8, 1000, bytesOf}, 4, workers), std::bad_alloc);
}

TEST(Deflate, PartsAreJoinedWhereverInAByteTheyEnd)
{
    std::set<int> seen;
    for (std::size_t size = 200; size < 400; ++size) {
        const Bytes data = letters(size);
        const Inflated result = inflated(deflated(data, 2, 4, 1), size);
        ASSERT_TRUE(result.bytes == data) << size;
        ASSERT_EQ(result.joints.size(), 1U) << size;
        seen.insert(*result.joints.begin());
    }
    EXPECT_EQ(seen, (std::set<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(Deflate, PartsCostLittle)
{
    const Bytes data = letters(1'000'000);
    const std::size_t whole = deflated(data, 1, 4, 1).size();
    EXPECT_LT(deflated(data, 4, 4, 1).size(), whole + whole / 100);
}

TEST(Deflate, APartWhoseStreamIsBrokenIsStored)
{
    for (const std::size_t size : {0U, 1U, 65535U, 65536U, 200'000U}) {
        const Bytes data = noise(size);
        Bytes room(size + 100, 0xff); // no stream at all
        std::size_t end = Png::openEnd(room, std::min<std::size_t>(size, 50), data);
        ASSERT_LE(end, size + 5 * (size / 65535 + 1));
        room.resize(end);
        room.insert(room.end(), {0x03, 0x00}); // a last block of nothing
        Bytes back(size + 1);
        z_stream state{};
        state.next_in = room.data();
        state.avail_in = static_cast<uInt>(room.size());
        state.next_out = back.data();
        state.avail_out = static_cast<uInt>(back.size());
        ASSERT_EQ(inflateInit2(&state, -MAX_WBITS), Z_OK);
        EXPECT_EQ(inflate(&state, Z_FINISH), Z_STREAM_END) << size;
        inflateEnd(&state);
        back.resize(state.total_out);
        EXPECT_TRUE(back == data) << size;
    }
}

TEST(Adler32, IsPutTogetherFromParts)
{
    // Zeros, and the bytes whose sums overflow soonest.
    for (const Bytes& data : {Bytes(300'000, 0), Bytes(300'000, 0xff), noise(300'000)}) {
        const std::span all(data);
        const uLong whole = adler32(1, data.data(), static_cast<uInt>(data.size()));
        for (const std::size_t cut : {0U, 1U, 65520U, 65521U, 65522U, 299'999U, 300'000U}) {
            Png::Adler32 sum;
            sum.append(Png::Adler32(all.first(cut / 2)));
            sum.append(Png::Adler32(all.subspan(cut / 2, cut - cut / 2)));
            sum.append(Png::Adler32(all.subspan(cut)));
            EXPECT_EQ(sum.value(), whole) << cut;

            Png::Adler32 rest(all.subspan(cut / 2, cut - cut / 2));
            rest.append(Png::Adler32(all.subspan(cut)));
            Png::Adler32 other(all.first(cut / 2));
            other.append(rest);
            EXPECT_EQ(other.value(), whole) << cut;
        }
    }
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
    for (const std::size_t count : {1U, 2U, 3U, 1000U}) {
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
    Bytes contradictory = storedBlocks(1);
    contradictory[3] ^= 1; // of the length's complement
    EXPECT_FALSE(Png::lastBlockOf(contradictory));
    EXPECT_FALSE(Png::lastBlockOf(Bytes{0x1b, 0x03, 0x00})); // fixed codes, and a symbol too many
    EXPECT_FALSE(Png::lastBlockOf(Bytes{0x07}));             // a type of block that does not exist
    EXPECT_FALSE(Png::lastBlockOf(Bytes{0x02, 0x0c}));       // its last byte, of zeros, is missing
    EXPECT_FALSE(Png::lastBlockOf({}));
}

/// Deflated by zlib, without header.
Bytes byZlib(const Bytes& data, int level, int strategy)
{
    z_stream state{};
    EXPECT_EQ(deflateInit2(&state, level, Z_DEFLATED, -MAX_WBITS, 8, strategy), Z_OK);
    Bytes stream(deflateBound(&state, data.size()));
    state.next_in = data.data();
    state.avail_in = static_cast<uInt>(data.size());
    state.next_out = stream.data();
    state.avail_out = static_cast<uInt>(stream.size());
    EXPECT_EQ(deflate(&state, Z_FINISH), Z_STREAM_END);
    stream.resize(state.total_out);
    deflateEnd(&state);
    return stream;
}

/// As zlib finds it.
std::optional<Png::LastBlock> lastBlockByZlib(const Bytes& stream)
{
    Bytes scratch(100'000);
    z_stream state{};
    state.next_in = stream.data();
    state.avail_in = static_cast<uInt>(stream.size());
    EXPECT_EQ(inflateInit2(&state, -MAX_WBITS), Z_OK);
    std::optional<Png::LastBlock> last;
    std::size_t start = 0;
    int status = Z_OK;
    while (status == Z_OK && !last) {
        state.next_out = scratch.data();
        state.avail_out = static_cast<uInt>(scratch.size());
        status = inflate(&state, Z_BLOCK);
        if (status != Z_OK || (state.data_type & 128) == 0)
            continue;
        const std::size_t at = state.total_in * 8 - static_cast<std::size_t>(state.data_type & 7);
        if ((state.data_type & 64) != 0)
            last = Png::LastBlock{start, at};
        start = at;
    }
    inflateEnd(&state);
    return last;
}

/// Long codes too: each letter is half as frequent as the one before.
Bytes rarer(std::size_t size)
{
    std::mt19937 random(11);
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] {
        return static_cast<std::uint8_t>(std::countl_zero(static_cast<std::uint32_t>(random())));
    });
    return bytes;
}

TEST(LastBlock, IsFoundWhereZlibFindsIt)
{
    std::vector<Maker> all(std::begin(makers), std::end(makers));
    all.push_back(rarer);
    for (const Maker maker : all) {
        for (const std::size_t size : {0U, 1U, 2U, 300U, 20'000U, 400'000U}) {
            const Bytes data = maker(size);
            for (const int level : {0, 1, 6}) {
                for (const int strategy : {Z_DEFAULT_STRATEGY, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED}) {
                    SCOPED_TRACE(testing::Message() << size << ", " << level << ", " << strategy);
                    const Bytes stream = byZlib(data, level, strategy);
                    const auto theirs = lastBlockByZlib(stream);
                    const auto ours = Png::lastBlockOf(stream);
                    ASSERT_TRUE(theirs);
                    ASSERT_TRUE(ours);
                    EXPECT_EQ(ours->start, theirs->start);
                    EXPECT_EQ(ours->end, theirs->end);
                }
            }
        }
    }
}

TEST(LastBlock, OfADamagedStreamLiesWithinIt)
{
    std::mt19937 random(12);
    const Bytes whole = byZlib(rarer(3000), 6, Z_DEFAULT_STRATEGY);
    int found = 0;
    int refused = 0;
    for (int round = 0; round < 20'000; ++round) {
        Bytes stream = whole;
        if (round % 4 == 0)
            stream.resize(random() % stream.size());
        for (auto changes = random() % 4; changes > 0 && !stream.empty(); --changes) {
            // At the head, where the codes stand, more often.
            const std::size_t range =
                round % 2 ? stream.size() : std::min<std::size_t>(stream.size(), 40);
            stream[random() % range] = static_cast<std::uint8_t>(random());
        }
        const auto ours = Png::lastBlockOf(stream);
        const auto theirs = lastBlockByZlib(stream);
        if (theirs) {
            ASSERT_TRUE(ours);
            ASSERT_EQ(ours->start, theirs->start);
            ASSERT_EQ(ours->end, theirs->end);
        }
        if (ours) {
            ASSERT_LT(ours->start, ours->end);
            ASSERT_LE(ours->end, stream.size() * 8);
        }
        ++(ours ? found : refused);
    }
    EXPECT_GT(found, 1000);
    EXPECT_GT(refused, 1000);
}

} // namespace
