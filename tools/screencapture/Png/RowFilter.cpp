#include "RowFilter.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace Png {

namespace {

// The filter types of ISO/IEC 15948, section 9.2.
constexpr std::uint8_t none = 0;
constexpr std::uint8_t sub = 1;
constexpr std::uint8_t up = 2;
constexpr std::uint8_t average = 3;
constexpr std::uint8_t paeth = 4;

void filterSub(const std::uint8_t* row, std::size_t pixelBytes, std::size_t count,
               std::uint8_t* filtered)
{
    const std::uint8_t* const left = row - pixelBytes;
    for (std::size_t i = 0; i < count; ++i)
        filtered[i] = static_cast<std::uint8_t>(row[i] - left[i]);
}

void filterUp(const std::uint8_t* row, const std::uint8_t* above, std::size_t count,
              std::uint8_t* filtered)
{
    for (std::size_t i = 0; i < count; ++i)
        filtered[i] = static_cast<std::uint8_t>(row[i] - above[i]);
}

void filterAverage(const std::uint8_t* row, const std::uint8_t* above, std::size_t pixelBytes,
                   std::size_t count, std::uint8_t* filtered)
{
    const std::uint8_t* const left = row - pixelBytes;
    for (std::size_t i = 0; i < count; ++i)
        filtered[i] = static_cast<std::uint8_t>(row[i] - (left[i] + above[i]) / 2);
}

/// Predicts from whichever of the left, upper and upper left neighbour lies nearest to
/// left + upper - upper left (section 9.4). In 16-bit numbers, so that the compiler can do many
/// bytes at once.
void filterPaeth(const std::uint8_t* row, const std::uint8_t* above, std::size_t pixelBytes,
                 std::size_t count, std::uint8_t* filtered)
{
    const std::uint8_t* const leftBytes = row - pixelBytes;
    const std::uint8_t* const aboveLeftBytes = above - pixelBytes;
    const auto distance = [](int a, int b) {
        return static_cast<std::int16_t>(std::abs(static_cast<std::int16_t>(a - b)));
    };
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t left = leftBytes[i];
        const std::int16_t upper = above[i];
        const std::int16_t upperLeft = aboveLeftBytes[i];
        const std::int16_t toLeft = distance(upper, upperLeft);
        const std::int16_t toUpper = distance(left, upperLeft);
        const std::int16_t toUpperLeft = distance(left + upper, 2 * upperLeft);
        const std::int16_t upperOrCorner = toUpper <= toUpperLeft ? upper : upperLeft;
        const bool isLeft = (toLeft <= toUpper) & (toLeft <= toUpperLeft);
        filtered[i] = static_cast<std::uint8_t>(row[i] - (isLeft ? left : upperOrCorner));
    }
}

/// The sum of the bytes' sizes as signed numbers: the smaller, the better they deflate, as a rule.
std::uint64_t magnitude(const std::uint8_t* bytes, std::size_t count)
{
    std::uint64_t sum = 0;
    constexpr std::size_t block = 1 << 20; // 2^20 * 128 stays within 32 bits
    for (std::size_t start = 0; start < count; start += block) {
        const std::size_t end = std::min(count, start + block);
        std::uint32_t part = 0;
        for (std::size_t i = start; i < end; ++i) {
            const std::uint8_t positive = bytes[i];
            const auto negative = static_cast<std::uint8_t>(-positive);
            part += std::min(positive, negative);
        }
        sum += part;
    }
    return sum;
}

} // namespace

RowFilter::RowFilter(Filtering filtering, std::size_t pixelBytes, std::size_t rowBytes)
    : m_filtering(filtering)
    , m_pixelBytes(pixelBytes)
    , m_rowBytes(rowBytes)
    , m_row(pixelBytes + rowBytes)
    , m_above(pixelBytes + rowBytes)
    , m_best(filtering == Filtering::Adaptive ? rowBytes : 0)
    , m_trial(m_best.size())
{
}

void RowFilter::write(std::uint8_t* filtered)
{
    const std::uint8_t* const row = m_row.data() + m_pixelBytes;
    const std::uint8_t* const above = m_above.data() + m_pixelBytes;
    switch (m_filtering) {
    case Filtering::None:
        filtered[0] = none;
        std::memcpy(filtered + 1, row, m_rowBytes);
        break;
    case Filtering::Adaptive: {
        std::uint64_t least = std::numeric_limits<std::uint64_t>::max();
        const auto weigh = [&](std::uint8_t type) {
            const std::uint64_t weight = magnitude(m_trial.data(), m_rowBytes);
            if (weight >= least)
                return;
            least = weight;
            filtered[0] = type;
            m_best.swap(m_trial);
        };
        filterUp(row, above, m_rowBytes, m_trial.data());
        weigh(up);
        filterSub(row, m_pixelBytes, m_rowBytes, m_trial.data());
        weigh(sub);
        filterAverage(row, above, m_pixelBytes, m_rowBytes, m_trial.data());
        weigh(average);
        filterPaeth(row, above, m_pixelBytes, m_rowBytes, m_trial.data());
        weigh(paeth);
        std::memcpy(filtered + 1, m_best.data(), m_rowBytes);
        break;
    }
    }
    skip();
}

} // namespace Png
