#include "Movie/Core/Picture.h"

#include <algorithm>

namespace {

constexpr std::size_t alignment = 128; // of luma rows in bytes, so that colour rows have half of it
constexpr std::uint8_t black = 16;
constexpr std::uint8_t colourless = 128;

constexpr int even(int side)
{
    return (side + 1) / 2 * 2;
}

} // namespace

Picture::Picture(int wantedWidth, int wantedHeight)
    : m_width(even(wantedWidth))
    , m_height(even(wantedHeight))
    , m_lumaStride((static_cast<std::size_t>(m_width) + alignment - 1) / alignment * alignment)
    , m_bytes(lumaOffset(m_height) * 3 / 2, colourless)
{
    std::fill_n(m_bytes.begin(), lumaOffset(m_height), black);
}

std::size_t Picture::colourOffset(Colour colour, int row) const
{
    const std::size_t plane = lumaOffset(m_height) / 4;
    return lumaOffset(m_height) + (colour == Colour::Red ? plane : 0) +
           colourStride() * static_cast<std::size_t>(row);
}
