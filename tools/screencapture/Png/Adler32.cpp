#include "Adler32.h"

#include <libdeflate.h>

namespace Png {

Adler32::Adler32(std::span<const std::uint8_t> bytes)
    : m_value(libdeflate_adler32(1, bytes.data(), bytes.size()))
    , m_size(bytes.size())
{
}

void Adler32::append(const Adler32& next)
{
    // The lower half is 1 plus the sum of all bytes, the upper half the sum of what the lower half
    // was after each byte.
    constexpr std::uint64_t modulus = 65521;
    const std::uint64_t sum = m_value & 0xffff;
    const std::uint64_t nextSum = next.m_value & 0xffff;
    const std::uint64_t lower = sum + nextSum + modulus - 1;
    const std::uint64_t upper =
        (m_value >> 16) + (next.m_value >> 16) + next.m_size % modulus * (sum + modulus - 1);
    m_value = static_cast<std::uint32_t>(upper % modulus << 16 | lower % modulus);
    m_size += next.m_size;
}

} // namespace Png
