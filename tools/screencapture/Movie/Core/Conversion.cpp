#include "Movie/Core/Conversion.h"

#include "Movie/Core/Luminance.h"

#include <cstring>

using ScreenTable::PixelRect;

// The loops below become vector instructions; where the machine has wider ones they are used. The
// choice is made before the thread sanitizer is ready for it.
#if defined(__x86_64__) && defined(__OPTIMIZE__) && !defined(__SANITIZE_THREAD__)
#define TAMRIK_WIDE_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define TAMRIK_WIDE_VECTORS
#endif

namespace {

TAMRIK_WIDE_VECTORS
void brightnessOf(const std::uint32_t* pixels, std::size_t count, std::uint8_t* luma)
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t pixel = pixels[i];
        const auto red = static_cast<std::int32_t>(pixel >> 16 & 0xff);
        const auto green = static_cast<std::int32_t>(pixel >> 8 & 0xff);
        const auto blue = static_cast<std::int32_t>(pixel & 0xff);
        luma[i] = static_cast<std::uint8_t>(
            (Luminance::brightness(red, green, blue) + 128 + (Luminance::floor << 8)) >> 8);
    }
}

TAMRIK_WIDE_VECTORS
void colourOf(const std::uint32_t* upper, const std::uint32_t* lower, std::size_t pairs,
              std::uint8_t* blueRow, std::uint8_t* redRow)
{
    constexpr std::int32_t offset = (Luminance::colourless << 10) + 512;
    for (std::size_t i = 0; i < pairs; ++i) {
        // Two channels at once: red and blue have 16 bits of room for the sum of four.
        const std::uint32_t a = upper[2 * i];
        const std::uint32_t b = upper[2 * i + 1];
        const std::uint32_t c = lower[2 * i];
        const std::uint32_t d = lower[2 * i + 1];
        const std::uint32_t redBlue =
            (a & 0xff00ff) + (b & 0xff00ff) + (c & 0xff00ff) + (d & 0xff00ff);
        const auto green = static_cast<std::int32_t>((a >> 8 & 0xff) + (b >> 8 & 0xff) +
                                                     (c >> 8 & 0xff) + (d >> 8 & 0xff));
        const auto red = static_cast<std::int32_t>(redBlue >> 16);
        const auto blue = static_cast<std::int32_t>(redBlue & 0xffff);
        blueRow[i] =
            static_cast<std::uint8_t>((Luminance::blueness(red, green, blue) + offset) >> 10);
        redRow[i] =
            static_cast<std::uint8_t>((Luminance::redness(red, green, blue) + offset) >> 10);
    }
}

bool replace(std::uint8_t* there, const std::vector<std::uint8_t>& row, std::size_t count)
{
    if (std::memcmp(there, row.data(), count) == 0)
        return false;
    std::memcpy(there, row.data(), count);
    return true;
}

} // namespace

Conversion::Conversion(int width)
    : m_upper(static_cast<std::size_t>(width) + 1)
    , m_lower(m_upper.size())
    , m_blue(m_upper.size() / 2)
    , m_red(m_upper.size() / 2)
{
}

bool Conversion::update(Picture& picture, const PixelRect& area, const std::uint32_t* pixels,
                        std::size_t stride)
{
    bool isChanged = false;
    for (int row = 0; row < area.height; row += 2) {
        const std::uint32_t* const upper = pixels + stride * static_cast<std::size_t>(row);
        const std::uint32_t* const lower = row + 1 < area.height ? upper + stride : upper;
        isChanged |= updatePair(picture, area, area.y + row, upper, lower);
    }
    return isChanged;
}

bool Conversion::updatePair(Picture& picture, const PixelRect& area, int row,
                            const std::uint32_t* upper, const std::uint32_t* lower)
{
    const auto width = static_cast<std::size_t>(area.width);
    const std::size_t pairs = width / 2;
    brightnessOf(upper, width, m_upper.data());
    brightnessOf(lower, width, m_lower.data());
    colourOf(upper, lower, pairs, m_blue.data(), m_red.data());
    std::size_t evenWidth = width;
    if (width % 2 != 0) {
        const std::uint32_t lastUpper[] = {upper[width - 1], upper[width - 1]};
        const std::uint32_t lastLower[] = {lower[width - 1], lower[width - 1]};
        m_upper[width] = m_upper[width - 1];
        m_lower[width] = m_lower[width - 1];
        colourOf(lastUpper, lastLower, 1, &m_blue[pairs], &m_red[pairs]);
        ++evenWidth;
    }

    bool isChanged = replace(picture.lumaRow(row) + area.x, m_upper, evenWidth);
    isChanged |= replace(picture.lumaRow(row + 1) + area.x, m_lower, evenWidth);
    using enum Picture::Colour;
    isChanged |= replace(picture.colourRow(Blue, row / 2) + area.x / 2, m_blue, evenWidth / 2);
    isChanged |= replace(picture.colourRow(Red, row / 2) + area.x / 2, m_red, evenWidth / 2);
    return isChanged;
}
