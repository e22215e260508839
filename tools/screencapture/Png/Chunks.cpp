#include "Chunks.h"

#include <array>

#include <libdeflate.h>

namespace Png {

void putNumber(std::uint8_t* bytes, std::uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        *bytes++ = static_cast<std::uint8_t>(number >> shift);
}

Chunks::Chunks()
    : m_bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'}
{
}

void Chunks::append(const char (&type)[5], std::span<const std::uint8_t> content)
{
    std::array<std::uint8_t, 4> number;
    putNumber(number.data(), static_cast<std::uint32_t>(content.size()));
    m_bytes.insert(m_bytes.end(), number.begin(), number.end());
    const std::size_t start = m_bytes.size();
    m_bytes.insert(m_bytes.end(), type, type + 4);
    m_bytes.insert(m_bytes.end(), content.begin(), content.end());
    // The CRC covers type and content (section 5.3).
    putNumber(number.data(), libdeflate_crc32(0, m_bytes.data() + start, m_bytes.size() - start));
    m_bytes.insert(m_bytes.end(), number.begin(), number.end());
}

} // namespace Png
