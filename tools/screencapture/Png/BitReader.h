#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace Png {

/// Reads a deflate stream bit by bit, a byte's least significant one first (RFC 1951, section
/// 3.1.1).
class BitReader {
public:
    static constexpr int readyBits = 56;

    explicit BitReader(std::span<const std::uint8_t> bytes)
        : m_bytes(bytes)
    {
    }

    /// Makes readyBits bits ready; after the end come zeros. False when some have been skipped that
    /// lie after the end.
    bool refill()
    {
        if (m_bytes.size() - m_at < sizeof m_bits || m_at > m_bytes.size())
            return refillByByte();
        std::uint64_t word;
        std::memcpy(&word, m_bytes.data() + m_at, sizeof word);
        if constexpr (std::endian::native == std::endian::big)
            word = __builtin_bswap64(word);
        // What does not count as ready comes once more with the next word, and is the same.
        m_bits |= word << m_count;
        m_at += static_cast<std::size_t>(63 - m_count) / 8;
        m_count |= readyBits;
        return true;
    }

    /// The next bits, the next one lowest; as many as are ready.
    std::uint64_t bits() const { return m_bits; }

    /// At most as many as are ready.
    void skip(int count)
    {
        m_bits >>= count;
        m_count -= count;
    }

    unsigned take(int count)
    {
        const auto value = static_cast<unsigned>(m_bits & ((std::uint64_t{1} << count) - 1));
        skip(count);
        return value;
    }

    /// How many bits of the stream have been skipped.
    std::size_t position() const { return m_at * 8 - static_cast<std::size_t>(m_count); }

    /// To any place in the stream, in bytes. Nothing is ready then.
    void moveTo(std::size_t byte)
    {
        m_at = byte;
        m_bits = 0;
        m_count = 0;
    }

private:
    bool refillByByte()
    {
        for (; m_count < readyBits; m_count += 8, ++m_at) {
            if (m_at < m_bytes.size())
                m_bits |= std::uint64_t{m_bytes[m_at]} << m_count;
        }
        return position() <= m_bytes.size() * 8;
    }

    std::span<const std::uint8_t> m_bytes;
    std::size_t m_at = 0; // bytes; goes on past the end
    std::uint64_t m_bits = 0;
    int m_count = 0; // of m_bits that are ready; above them may be some that are not
};

} // namespace Png
