#include "Platform/Linux/X11/PixelFormat.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace X11 {

namespace {

constexpr int widestChannel = 16; // bits; its table of levels has 2^16 entries

bool isOneRun(std::uint32_t mask)
{
    const int width = std::popcount(mask);
    return width > 0 && width <= widestChannel &&
           mask >> std::countr_zero(mask) == (std::uint32_t{1} << width) - 1;
}

/// Rows of blue, green, red and a byte that means nothing.
void readPlain(const std::uint8_t* row, std::size_t width, std::uint8_t* rgb)
{
    std::size_t x = 0;
    if constexpr (std::endian::native == std::endian::little) {
        // Whole words, of which each writes one byte too many that the next one overwrites: three
        // times as fast as byte by byte.
        for (; x + 1 < width; ++x) {
            std::uint32_t pixel;
            std::memcpy(&pixel, row + 4 * x, 4);
            pixel = __builtin_bswap32(pixel) >> 8;
            std::memcpy(rgb + 3 * x, &pixel, 4);
        }
    }
    for (; x < width; ++x) {
        rgb[3 * x] = row[4 * x + 2];
        rgb[3 * x + 1] = row[4 * x + 1];
        rgb[3 * x + 2] = row[4 * x];
    }
}

} // namespace

bool PixelFormat::isSupported() const
{
    const bool isWhole =
        bitsPerPixel == 8 || bitsPerPixel == 16 || bitsPerPixel == 24 || bitsPerPixel == 32;
    const bool isPadded = scanlinePad == 8 || scanlinePad == 16 || scanlinePad == 32;
    return isWhole && isPadded && isOneRun(redMask) && isOneRun(greenMask) && isOneRun(blueMask);
}

bool PixelFormat::isPlain() const
{
    return bitsPerPixel == 32 && byteOrder == ByteOrder::LeastSignificantFirst &&
           redMask == 0xff0000 && greenMask == 0x00ff00 && blueMask == 0x0000ff;
}

bool PixelFormat::isNative() const
{
    return isPlain() && std::endian::native == std::endian::little;
}

std::size_t PixelFormat::stride(std::size_t width) const
{
    const auto pad = static_cast<std::size_t>(scanlinePad);
    const std::size_t bits = width * static_cast<std::size_t>(bitsPerPixel);
    return (bits + pad - 1) / pad * pad / 8;
}

RgbReader::Channel::Channel(std::uint32_t mask_)
    : mask(mask_)
    , shift(std::countr_zero(mask_))
{
    const std::uint32_t full = mask >> shift;
    const int surplus = std::max(0, std::popcount(mask) - 8);
    levels.reserve(std::size_t{full} + 1);
    for (std::uint32_t value = 0; value <= full; ++value) {
        const std::uint32_t level = surplus > 0 ? value >> surplus : value * 255 / full;
        levels.push_back(static_cast<std::uint8_t>(level));
    }
}

RgbReader::RgbReader(const PixelFormat& format)
    : m_format(format)
    , m_bytesPerPixel(static_cast<std::size_t>(format.bitsPerPixel) / 8)
    , m_isPlain(format.isPlain())
    , m_channels{Channel(format.redMask), Channel(format.greenMask), Channel(format.blueMask)}
{
}

std::uint32_t RgbReader::pixelAt(const std::uint8_t* bytes) const
{
    std::uint32_t pixel = 0;
    const bool isLeastFirst = m_format.byteOrder == ByteOrder::LeastSignificantFirst;
    for (std::size_t i = 0; i < m_bytesPerPixel; ++i) {
        const std::size_t at = isLeastFirst ? m_bytesPerPixel - 1 - i : i;
        pixel = pixel << 8 | bytes[at];
    }
    return pixel;
}

void RgbReader::read(const std::uint8_t* row, std::size_t width, std::uint8_t* rgb) const
{
    if (m_isPlain) {
        readPlain(row, width, rgb);
        return;
    }
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint32_t pixel = pixelAt(row + x * m_bytesPerPixel);
        for (const Channel& channel : m_channels)
            *rgb++ = channel(pixel);
    }
}

} // namespace X11
