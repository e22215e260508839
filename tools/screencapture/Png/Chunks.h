#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Png {

/// A PNG file in memory as it grows, chunk by chunk (ISO/IEC 15948, section 5).
class Chunks {
public:
    /// Starts with the signature.
    Chunks();

    /// Appends one chunk with its length and CRC. `type` is four letters; `content` shorter than
    /// 2^31 bytes.
    void append(const char (&type)[5], std::span<const std::uint8_t> content);

    /// Makes room for this many bytes more.
    void reserve(std::size_t bytes) { m_bytes.reserve(m_bytes.size() + bytes); }

    std::vector<std::uint8_t> take() { return std::move(m_bytes); }

private:
    std::vector<std::uint8_t> m_bytes;
};

/// Writes `number` as PNG does, most significant byte first.
void putNumber(std::uint8_t* bytes, std::uint32_t number);

} // namespace Png
