#pragma once

#include "Buffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

struct libdeflate_compressor;

namespace Png {

struct FreeCompressor {
    void operator()(libdeflate_compressor* compressor) const;
};
using Compressor = std::unique_ptr<libdeflate_compressor, FreeCompressor>;

/// `level` is libdeflate's. Throws std::bad_alloc.
Compressor compressorOf(int level);

/// `data` as one zlib stream (RFC 1950). With several workers as many parts of it are deflated at
/// once, each on a thread of its own: what repeats across their borders is not found, which makes
/// the stream some hundred bytes longer. Throws std::bad_alloc.
Buffer zlibStream(std::span<const std::uint8_t> data, int level, unsigned workers);

} // namespace Png
