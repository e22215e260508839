#include "Png/Encoder.h"

#include "support/PngReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

struct Pixels {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgb;
};

template <class Colour>
Pixels paint(std::uint32_t width, std::uint32_t height, Colour colour)
{
    Pixels pixels{width, height, {}};
    pixels.rgb.reserve(std::size_t{3} * width * height);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::uint32_t rgb = colour(x, y);
            for (int shift = 16; shift >= 0; shift -= 8)
                pixels.rgb.push_back(static_cast<std::uint8_t>(rgb >> shift));
        }
    }
    return pixels;
}

Pixels noise(std::uint32_t width, std::uint32_t height)
{
    std::mt19937 random(width * 1000 + height);
    return paint(width, height, [&](std::uint32_t, std::uint32_t) {
        return static_cast<std::uint32_t>(random());
    });
}

Pixels gradient(std::uint32_t width, std::uint32_t height)
{
    return paint(width, height, [&](std::uint32_t x, std::uint32_t y) {
        return (x * 255 / width) << 16 | (y * 255 / height) << 8 | ((x + y) & 255);
    });
}

/// Light that falls off, with a sensor's noise on it.
Pixels photograph(std::uint32_t width, std::uint32_t height)
{
    std::mt19937 random(9);
    return paint(width, height, [&](std::uint32_t x, std::uint32_t y) {
        std::uint32_t rgb = 0;
        for (int channel = 0; channel < 3; ++channel)
            rgb = rgb << 8 | (60 + (x * 90 + y * 70) / (width + height) +
                              static_cast<std::uint32_t>(random() % 7));
        return rgb;
    });
}

Pixels flat(std::uint32_t width, std::uint32_t height)
{
    return paint(width, height, [](std::uint32_t, std::uint32_t) { return 0x3a6ea5U; });
}

/// Dark strokes of a few shades, in lines, on white paper whose shade may change from row to row.
Pixels text(std::uint32_t width, std::uint32_t height, std::uint32_t paperShades)
{
    std::mt19937 random(5);
    return paint(width, height, [&](std::uint32_t x, std::uint32_t y) -> std::uint32_t {
        const bool isInk = y % 16 > 3 && y % 16 < 13 && x % 7 < 5 && random() % 3 == 0;
        return isInk ? 0x10101U * (random() % 4 * 40) : 0xffffffU - y * 8 % paperShades;
    });
}

Pixels text(std::uint32_t width, std::uint32_t height)
{
    return text(width, height, 1);
}

/// Exactly `colours` of them.
Pixels colourful(std::uint32_t colours)
{
    return paint(40, 30,
                 [&](std::uint32_t x, std::uint32_t y) { return (y * 40 + x) % colours * 54321; });
}

std::string encode(const Pixels& pixels, double dotsPerInch = 72, unsigned workers = 1)
{
    const Png::Source source{pixels.width, pixels.height, [&](std::uint32_t y, std::uint8_t* rgb) {
                                 const std::size_t rowBytes = std::size_t{3} * pixels.width;
                                 std::memcpy(rgb, pixels.rgb.data() + rowBytes * y, rowBytes);
                             }};
    const std::vector<std::uint8_t> file = Png::encode(source, dotsPerInch, workers);
    return {file.begin(), file.end()};
}

std::size_t colourCount(const Pixels& pixels)
{
    std::set<std::array<std::uint8_t, 3>> colours;
    for (std::size_t at = 0; at < pixels.rgb.size(); at += 3)
        colours.insert({pixels.rgb[at], pixels.rgb[at + 1], pixels.rgb[at + 2]});
    return colours.size();
}

void expectReadsBack(const Pixels& pixels)
{
    SCOPED_TRACE(std::to_string(pixels.width) + 'x' + std::to_string(pixels.height));
    const PngImage image = readPng(encode(pixels));
    EXPECT_EQ(image.width, pixels.width);
    EXPECT_EQ(image.height, pixels.height);
    EXPECT_EQ(image.bitDepth, 8);
    EXPECT_EQ(image.colourType, colourCount(pixels) <= 256 ? 3 : 2);
    EXPECT_TRUE(image.rgb == pixels.rgb) << "other pixels";
}

using Painter = Pixels (*)(std::uint32_t, std::uint32_t);
constexpr Painter painters[] = {noise, gradient, photograph, flat, text};

TEST(Encoder, EveryWidthAndHeightReadsBack)
{
    for (const Painter painter : painters) {
        for (std::uint32_t size = 1; size <= 40; ++size) {
            expectReadsBack(painter(size, 7));
            expectReadsBack(painter(13, size));
        }
    }
}

TEST(Encoder, LargerPicturesReadBack)
{
    for (const Painter painter : painters) {
        expectReadsBack(painter(641, 479));
        expectReadsBack(painter(1, 5000));
        expectReadsBack(painter(5000, 1));
        expectReadsBack(painter(63, 32)); // as many rows as are tried out
        expectReadsBack(painter(63, 33));
        expectReadsBack(painter(64, 1023));
    }
}

TEST(Encoder, SeveralWorkersMakeTheSamePicture)
{
    // At least four bands of 1 MiB, or of a longer row, so that the work is shared out.
    for (const Pixels& pixels :
         {gradient(1000, 1398), noise(1000, 1398), gradient(400'000, 5), text(2100, 2000)})
    {
        SCOPED_TRACE(testing::Message() << pixels.width << 'x' << pixels.height);
        const std::string byOne = encode(pixels, 72, 1);
        const std::string byTwo = encode(pixels, 72, 2);
        EXPECT_TRUE(byOne != byTwo) << "the work was not shared out";
        for (const unsigned workers : {3U, 8U})
            EXPECT_TRUE(encode(pixels, 72, workers) == byTwo) << workers << " workers";
        const PngImage one = readPng(byOne);
        const PngImage two = readPng(byTwo);
        EXPECT_TRUE(one.rgb == pixels.rgb) << "other pixels";
        EXPECT_TRUE(two.rgb == pixels.rgb) << "other pixels";
        EXPECT_EQ(two.filterTypes, one.filterTypes);
        EXPECT_EQ(two.colourType, one.colourType);
        EXPECT_LT(byTwo.size(), byOne.size() + byOne.size() / 200 + 5000);
    }
}

TEST(Encoder, ASmallPictureIsNotSharedOut)
{
    for (const Pixels& pixels :
         {flat(1, 1), gradient(640, 480), gradient(1000, 1397), gradient(700'000, 3)})
        EXPECT_TRUE(encode(pixels, 72, 8) == encode(pixels, 72, 1)) << pixels.width;
}

TEST(Encoder, UpTo256ColoursGoIntoAPalette)
{
    for (const std::uint32_t colours : {1U, 2U, 3U, 16U, 255U, 256U, 257U, 258U, 1000U}) {
        const Pixels pixels = colourful(colours);
        ASSERT_EQ(colourCount(pixels), colours);
        expectReadsBack(pixels);
        const PngImage image = readPng(encode(pixels));
        const auto palettes = std::count(image.chunkTypes.begin(), image.chunkTypes.end(), "PLTE");
        EXPECT_EQ(palettes, colours <= 256 ? 1 : 0);
        EXPECT_EQ(image.pixelsPerMetreX, 2835U);
    }
}

TEST(Encoder, DataComesInChunksOfAReasonableSize)
{
    const PngImage image = readPng(encode(noise(700, 700)));
    EXPECT_LE(image.largestChunk, std::size_t{256} << 10);
    const auto dataChunks = std::count(image.chunkTypes.begin(), image.chunkTypes.end(), "IDAT");
    EXPECT_EQ(dataChunks, 6); // 1.47 MB that do not deflate
    EXPECT_EQ(image.chunkTypes.size(), 9U);
    EXPECT_EQ(image.chunkTypes[1], "pHYs");
}

TEST(Encoder, DensityIsInPixelsPerMetre)
{
    const struct {
        double dotsPerInch;
        std::uint32_t perMetre;
    } rows[] = {{72, 2835},  {90, 3543}, {108, 4252},        {144, 5669},
                {216, 8504}, {0, 0},     {1e300, 0x7fffffff}};
    for (const auto& row : rows) {
        const PngImage image = readPng(encode(flat(3, 3), row.dotsPerInch));
        EXPECT_EQ(image.pixelsPerMetreX, row.perMetre) << row.dotsPerInch;
        EXPECT_EQ(image.pixelsPerMetreY, row.perMetre) << row.dotsPerInch;
    }
}

TEST(Encoder, ChoosesTheFilteringThatSuitsThePicture)
{
    // Filters are what makes a smooth picture small; text they only make larger.
    for (const int type : readPng(encode(gradient(640, 480))).filterTypes)
        ASSERT_NE(type, 0);
    const std::vector<int> ofPhotograph = readPng(encode(photograph(640, 480))).filterTypes;
    EXPECT_GT(std::count(ofPhotograph.begin(), ofPhotograph.end(), 3), 400); // average
    const PngImage letters = readPng(encode(text(640, 480, 0x1fff)));
    ASSERT_EQ(letters.filterTypes.size(), 480U);
    for (const int type : letters.filterTypes)
        ASSERT_EQ(type, 0);
    EXPECT_LT(encode(gradient(640, 480)).size(), 640U * 480 * 3 / 100);
    EXPECT_LT(encode(flat(640, 480)).size(), 5000U);
}

} // namespace
