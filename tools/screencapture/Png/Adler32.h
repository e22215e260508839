#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Png {

/// The checksum of a zlib stream (RFC 1950, section 8), which can be put together from parts.
class Adler32 {
public:
    Adler32() = default; // of no bytes
    explicit Adler32(std::span<const std::uint8_t> bytes);

    /// Makes it that of its own bytes with those of `next` after them.
    void append(const Adler32& next);

    std::uint32_t value() const { return m_value; }

private:
    std::uint32_t m_value = 1;
    std::size_t m_size = 0; // bytes
};

} // namespace Png
