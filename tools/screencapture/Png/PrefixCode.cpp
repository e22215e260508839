#include "PrefixCode.h"

namespace Png {

namespace {

/// Codes stand in the stream with their first bit lowest.
unsigned reversed(unsigned code, int length)
{
    unsigned result = 0;
    for (int i = 0; i < length; ++i, code >>= 1)
        result = result << 1 | (code & 1);
    return result;
}

} // namespace

bool PrefixCode::set(std::span<const std::uint8_t> lengths, std::span<const Symbol> symbols)
{
    m_counts.fill(0);
    for (const std::uint8_t length : lengths)
        ++m_counts[length];
    m_counts[0] = 0;

    std::array<unsigned, longest + 1> nextCode{};
    std::array<std::size_t, longest + 1> nextPlace{};
    for (std::size_t length = 1; length <= longest; ++length) {
        nextCode[length] = (nextCode[length - 1] + m_counts[length - 1]) << 1;
        nextPlace[length] = nextPlace[length - 1] + m_counts[length - 1];
        if (nextCode[length] + m_counts[length] > 1U << length)
            return false;
    }

    m_near.fill({});
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        const int length = lengths[symbol];
        if (length == 0)
            continue;
        const Step step{symbols[symbol].kind,
                        static_cast<std::uint8_t>(length + symbols[symbol].extraBits)};
        const auto at = static_cast<std::size_t>(length);
        m_inOrder[nextPlace[at]++] = step;
        fillNear(nextCode[at]++, length, step);
    }
    return true;
}

void PrefixCode::fillNear(unsigned code, int length, Step step)
{
    if (length > nearBits)
        return;
    for (std::size_t at = reversed(code, length); at < m_near.size();
         at += std::size_t{1} << length)
        m_near[at] = step;
}

PrefixCode::Step PrefixCode::farStep(std::uint64_t bits) const
{
    unsigned code = 0;
    unsigned first = 0; // of the codes of this length
    std::size_t place = 0;
    for (std::size_t length = 1; length <= longest; ++length, bits >>= 1) {
        code = code << 1 | static_cast<unsigned>(bits & 1);
        first <<= 1;
        if (code - first < m_counts[length])
            return m_inOrder[place + code - first];
        first += m_counts[length];
        place += m_counts[length];
    }
    return {};
}

} // namespace Png
