#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// A picture as the encoder takes it: a plane of brightness and two of colour at half the size each
/// way (4:2:0), BT.709 in the limited range. Black to begin with.
///
/// Its sides are even: a wanted side that is odd is rounded up, and whoever paints repeats the last
/// column or row there.
class Picture {
public:
    /// Two planes of colour: how blue and how red it is.
    enum class Colour { Blue, Red };

    Picture(int wantedWidth, int wantedHeight);

    int width() const { return m_width; }
    int height() const { return m_height; }

    /// From one row to the next, in bytes.
    std::size_t lumaStride() const { return m_lumaStride; }
    std::size_t colourStride() const { return m_lumaStride / 2; }

    std::uint8_t* lumaRow(int y) { return m_bytes.data() + lumaOffset(y); }
    const std::uint8_t* lumaRow(int y) const { return m_bytes.data() + lumaOffset(y); }

    /// `row` counts rows of colour: half as many as those of brightness.
    std::uint8_t* colourRow(Colour colour, int row)
    {
        return m_bytes.data() + colourOffset(colour, row);
    }
    const std::uint8_t* colourRow(Colour colour, int row) const
    {
        return m_bytes.data() + colourOffset(colour, row);
    }

    /// All planes, one after the other.
    std::uint8_t* bytes() { return m_bytes.data(); }
    std::size_t size() const { return m_bytes.size(); }

private:
    std::size_t lumaOffset(int y) const { return m_lumaStride * static_cast<std::size_t>(y); }
    std::size_t colourOffset(Colour colour, int row) const;

    int m_width;
    int m_height;
    std::size_t m_lumaStride;
    std::vector<std::uint8_t> m_bytes;
};
