#pragma once

#include "Buffer.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

struct libdeflate_compressor;

namespace Png {

struct FreeCompressor {
    void operator()(libdeflate_compressor* compressor) const;
};
using Compressor = std::unique_ptr<libdeflate_compressor, FreeCompressor>;

/// `level` is libdeflate's. Throws std::bad_alloc.
Compressor compressorOf(int level);

/// Data that comes in parts, each made when it is wanted.
struct PartedData {
    std::size_t count = 1;   // of the parts, at least 1
    std::size_t largest = 0; // of the parts, in bytes
    /// The bytes of one part, which may lie in `scratch`, where `largest` bytes have room. Called
    /// once for each, in any order and on several threads at once.
    std::function<std::span<const std::uint8_t>(std::size_t part, std::uint8_t* scratch)> bytesOf;
};

/// The data as one zlib stream (RFC 1950), in pieces that follow each other. On `workers` threads
/// at most, which changes nothing in it. What repeats across a border of two parts is not found.
/// Throws std::bad_alloc.
std::vector<Buffer> zlibStream(const PartedData& data, int level, unsigned workers);

/// Turns the stream (RFC 1951) of `data` into one that another can follow: it ends at a whole byte
/// and has no last block. It is the first `size` bytes of `room`, which has openEndBytes more than
/// libdeflate wants; should it be broken, the data are stored as they are. Returns its new size.
std::size_t openEnd(std::span<std::uint8_t> room, std::size_t size,
                    std::span<const std::uint8_t> data);
constexpr std::size_t openEndBytes = 5;

} // namespace Png
