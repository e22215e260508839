#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace X11 {

enum class ByteOrder { LeastSignificantFirst, MostSignificantFirst };

/// How a ZPixmap image of a TrueColor visual keeps its pixels (X Window System Protocol, encoding
/// of images).
struct PixelFormat {
    int bitsPerPixel = 32; // 8, 16, 24 or 32
    int scanlinePad = 32;  // rows are padded to this many bits: 8, 16 or 32
    ByteOrder byteOrder = ByteOrder::LeastSignificantFirst;
    std::uint32_t redMask = 0xff0000;
    std::uint32_t greenMask = 0x00ff00;
    std::uint32_t blueMask = 0x0000ff;

    /// Whether colours can be read from it: whole bytes a pixel, and three masks of one run of bits
    /// each.
    bool isSupported() const;

    /// Whether a pixel is a 32-bit number with red, green and blue in its lower 24 bits, from the
    /// third byte down, least significant byte first: the common one.
    bool isPlain() const;
    /// Whether that is also what this machine's numbers 0xRRGGBB are in memory: the common case, in
    /// which nothing has to be converted.
    bool isNative() const;

    /// From one row to the next, in bytes.
    std::size_t stride(std::size_t width) const;
};

/// Turns rows of server pixels into 8-bit red, green, blue. Narrower channels are scaled so that
/// their full value becomes 255, rounded down; of wider ones the upper eight bits count. Other
/// programs that take pictures of X11 screens do the same, so theirs and ours compare equal.
class RgbReader {
public:
    /// `format` must be supported.
    explicit RgbReader(const PixelFormat& format);

    /// Reads `width` pixels from `row` and writes three bytes each to `rgb`. Safe to call from
    /// several threads at once.
    void read(const std::uint8_t* row, std::size_t width, std::uint8_t* rgb) const;

private:
    struct Channel {
        explicit Channel(std::uint32_t mask);

        std::uint8_t operator()(std::uint32_t pixel) const
        {
            return levels[(pixel & mask) >> shift];
        }

        std::uint32_t mask;
        int shift;
        std::vector<std::uint8_t> levels; // the 8-bit level of each value of the channel
    };

    std::uint32_t pixelAt(const std::uint8_t* bytes) const;

    PixelFormat m_format;
    std::size_t m_bytesPerPixel;
    bool m_isPlain; // 32 bits, least significant byte first, blue, green, red: the common one
    std::array<Channel, 3> m_channels;
};

} // namespace X11
