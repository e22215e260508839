#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A PNG file put together by hand.
struct PngFile {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    int bitDepth = 8;
    int colourType = 2; ///< 0 grey, 2 colours, 3 palette, 4 grey with alpha, 6 colours with it.
    std::string chunks = {}; ///< Between header and pixels, of `chunk`.
    std::string row = {};    ///< What each row holds, without its filter byte.
    std::uint32_t rows = 1;  ///< How many are there, whatever the header says.

    std::string bytes() const;

    static std::string number(std::uint32_t value); ///< Four bytes, the highest first.
    static std::string chunk(const std::string& type, const std::string& content);
    /// A density, in dots a metre when `unit` is 1.
    static std::string density(std::uint32_t dots, char unit);
};

/// An EXIF block with an orientation, little endian, and with a density unless `dotsPerInch` is 0.
std::string exifBlock(int orientation, std::uint32_t dotsPerInch = 0);
