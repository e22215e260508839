#include "Deflate.h"

#include "LastBlock.h"
#include "Workers.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <new>
#include <vector>

#include <libdeflate.h>

namespace Png {

namespace {

/// How much longer a part takes of which the last block has to be found than one that stays as it
/// is.
constexpr double findingCost = 1.5;

constexpr std::size_t headerSize = 2;
constexpr std::size_t checksumSize = 4;
constexpr std::size_t mostOpening = 5; // bytes that opening a stream may add

/// Makes a deflate stream of `size` bytes one that another can follow: it ends at a whole byte, and
/// has no last block. There is room for mostOpening bytes after it. Returns its new size, or 0 when
/// that is not possible.
std::size_t openEnd(std::uint8_t* stream, std::size_t size)
{
    const auto last = lastBlockOf({stream, size});
    if (!last)
        return 0;
    stream[last->start / 8] &= static_cast<std::uint8_t>(~(1U << last->start % 8));
    // An empty stored block (RFC 1951, section 3.2.4): three zero bits, zeros up to the next byte,
    // its length and the length's complement.
    constexpr std::size_t blockHeader = 3; // bits
    const std::size_t wholeBytes = (last->end + blockHeader + 7) / 8;
    std::uint8_t* out = stream + size;
    while (out < stream + wholeBytes)
        *out++ = 0;
    constexpr std::array<std::uint8_t, 4> length{0x00, 0x00, 0xff, 0xff};
    out = std::copy(length.begin(), length.end(), out);
    return static_cast<std::size_t>(out - stream);
}

/// A part of the data, and the place in the whole stream's buffer for what comes of it.
struct Part {
    std::span<const std::uint8_t> data;
    std::size_t at = 0;
    std::size_t room = 0;
    std::size_t size = 0;
};

std::vector<Part> partsOf(std::span<const std::uint8_t> data, unsigned count)
{
    const double shares = (count - 1) + findingCost;
    const auto share = static_cast<std::size_t>(static_cast<double>(data.size()) / shares);
    std::vector<Part> parts(count);
    std::size_t at = headerSize;
    for (Part& part : parts) {
        const bool isLast = &part == &parts.back();
        part.data = data.first(isLast ? data.size() : share);
        part.at = at;
        part.room = libdeflate_deflate_compress_bound(nullptr, part.data.size());
        at += part.room + mostOpening;
        data = data.subspan(part.data.size());
    }
    return parts;
}

void putChecksum(std::uint8_t* bytes, std::span<const std::uint8_t> data)
{
    const std::uint32_t sum = libdeflate_adler32(1, data.data(), data.size());
    for (int shift = 24; shift >= 0; shift -= 8)
        *bytes++ = static_cast<std::uint8_t>(sum >> shift);
}

Buffer inOne(std::span<const std::uint8_t> data, int level)
{
    const Compressor compressor = compressorOf(level);
    Buffer stream(libdeflate_zlib_compress_bound(compressor.get(), data.size()));
    stream.shrink(libdeflate_zlib_compress(compressor.get(), data.data(), data.size(),
                                           stream.data(), stream.size()));
    return stream;
}

} // namespace

void FreeCompressor::operator()(libdeflate_compressor* compressor) const
{
    libdeflate_free_compressor(compressor);
}

Compressor compressorOf(int level)
{
    Compressor compressor(libdeflate_alloc_compressor(level));
    if (!compressor)
        throw std::bad_alloc();
    return compressor;
}

Buffer zlibStream(std::span<const std::uint8_t> data, int level, unsigned workers)
{
    if (workers < 2)
        return inOne(data, level);

    std::vector<Part> parts = partsOf(data, workers);
    Buffer stream(parts.back().at + parts.back().room + checksumSize);
    std::atomic<bool> isJoinable = true;
    inParallel(workers, [&](unsigned number) {
        Part& part = parts[number];
        std::uint8_t* const out = stream.data() + part.at;
        part.size = libdeflate_deflate_compress(compressorOf(level).get(), part.data.data(),
                                                part.data.size(), out, part.room);
        if (&part == &parts.back())
            return;
        part.size = openEnd(out, part.size);
        if (part.size == 0)
            isJoinable = false;
    });
    if (!isJoinable)
        return inOne(data, level);

    stream.data()[0] = 0x78; // deflate, a window of 32 KiB
    stream.data()[1] = 0x01; // no dictionary; makes the two a multiple of 31
    std::size_t size = headerSize;
    for (const Part& part : parts) {
        std::memmove(stream.data() + size, stream.data() + part.at, part.size);
        size += part.size;
    }
    putChecksum(stream.data() + size, data);
    stream.shrink(size + checksumSize);
    return stream;
}

} // namespace Png
