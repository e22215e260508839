#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Png {

/// Where the last block of a deflate stream starts and ends. Both count bits from the start of the
/// stream, a byte's least significant one first.
struct LastBlock {
    std::size_t start;
    std::size_t end;
};

/// Reads a stream without header (RFC 1951) to its end, which takes about half as long as it took
/// to deflate it. Absent when the stream is broken, too long for zlib to take at once (4 GiB), or
/// there is not memory enough.
std::optional<LastBlock> lastBlockOf(std::span<const std::uint8_t> stream);

} // namespace Png
