#include "Deflate.h"

#include "Adler32.h"
#include "Chunks.h"
#include "LastBlock.h"
#include "Workers.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <new>

#include <libdeflate.h>

namespace Png {

namespace {

// A window of 32 KiB, no dictionary; a multiple of 31.
constexpr std::array<std::uint8_t, 2> header{0x78, 0x01};
constexpr std::size_t checksumBytes = 4;

/// Writes a stored block (RFC 1951, section 3.2.4) that is not the last one, from the byte on that
/// follows its three bits of header. Returns its end.
std::uint8_t* putStored(std::uint8_t* out, std::span<const std::uint8_t> data)
{
    const auto length = static_cast<std::uint16_t>(data.size());
    for (const unsigned number : {unsigned{length}, ~unsigned{length}}) {
        *out++ = static_cast<std::uint8_t>(number);
        *out++ = static_cast<std::uint8_t>(number >> 8);
    }
    return std::copy(data.begin(), data.end(), out);
}

std::uint8_t* putAllStored(std::uint8_t* out, std::span<const std::uint8_t> data)
{
    constexpr std::size_t largestBlock = 0xffff;
    while (!data.empty()) {
        const std::size_t size = std::min(largestBlock, data.size());
        *out++ = 0;
        out = putStored(out, data.first(size));
        data = data.subspan(size);
    }
    return out;
}

/// Room for what comes of a part, with what may stand before and after it.
Buffer roomFor(libdeflate_compressor* compressor, std::size_t bytes)
{
    return Buffer(header.size() + libdeflate_deflate_compress_bound(compressor, bytes) +
                  std::max(openEndBytes, checksumBytes));
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

std::size_t openEnd(std::span<std::uint8_t> room, std::size_t size,
                    std::span<const std::uint8_t> data)
{
    std::uint8_t* const stream = room.data();
    const auto last = lastBlockOf(room.first(size));
    if (!last)
        return static_cast<std::size_t>(putAllStored(stream, data) - stream);
    stream[last->start / 8] &= static_cast<std::uint8_t>(~(1U << last->start % 8));
    // A stored block of nothing: three zero bits, zeros up to the next byte, and its length.
    constexpr std::size_t blockHeader = 3; // bits
    std::uint8_t* const end = stream + (last->end + blockHeader + 7) / 8;
    std::fill(stream + (last->end + 7) / 8, end, std::uint8_t{0});
    return static_cast<std::size_t>(putStored(end, {}) - stream);
}

std::vector<Buffer> zlibStream(const PartedData& data, int level, unsigned workers)
{
    std::vector<Buffer> pieces(data.count);
    std::vector<Adler32> checksums(data.count);
    std::atomic<std::size_t> next = 0;
    const auto deflateParts = [&](unsigned) {
        const Compressor compressor = compressorOf(level);
        Buffer scratch(data.largest);
        for (std::size_t part = next++; part < data.count; part = next++) {
            const std::span<const std::uint8_t> bytes = data.bytesOf(part, scratch.data());
            checksums[part] = Adler32(bytes);
            Buffer piece = roomFor(compressor.get(), bytes.size());
            const std::size_t start = part == 0 ? header.size() : 0;
            const std::span<std::uint8_t> room(piece.data() + start, piece.size() - start);
            std::size_t size = libdeflate_deflate_compress(compressor.get(), bytes.data(),
                                                           bytes.size(), room.data(), room.size());
            if (part + 1 < data.count)
                size = openEnd(room, size, bytes);
            piece.resize(start + size);
            pieces[part] = std::move(piece);
        }
    };
    inParallel(static_cast<unsigned>(std::min<std::size_t>(workers, data.count)), deflateParts);

    std::copy(header.begin(), header.end(), pieces.front().data());
    Adler32 checksum;
    for (const Adler32& each : checksums)
        checksum.append(each);
    Buffer& last = pieces.back();
    putNumber(last.data() + last.size(), checksum.value());
    last.resize(last.size() + checksumBytes);
    return pieces;
}

} // namespace Png
