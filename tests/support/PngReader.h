#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A PNG file as libpng and a chunk reader of our own understand it.
struct PngImage {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgb; ///< Three bytes a pixel, no padding.
    int bitDepth = 0;
    int colourType = 0;
    std::optional<std::uint32_t> pixelsPerMetreX; ///< Of a pHYs chunk in metres.
    std::optional<std::uint32_t> pixelsPerMetreY;
    std::vector<std::string> chunkTypes; ///< In order.
    std::size_t largestChunk = 0;        ///< In bytes of content.
    std::vector<int> filterTypes;        ///< Of each row.

    /// Three bytes of the pixel, as 0xRRGGBB.
    std::uint32_t pixel(std::uint32_t x, std::uint32_t y) const;
};

/// Reads a whole file. Fails the running test, and returns an empty image, when any part is wrong:
/// signature, order, lengths, CRCs, trailing bytes, or anything that libpng objects to.
PngImage readPng(const std::string& file);
