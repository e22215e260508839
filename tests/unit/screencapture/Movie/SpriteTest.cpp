#include "Movie/Core/Sprite.h"
#include "Movie/Core/Conversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using enum Picture::Colour;

Picture pictureOf(const std::vector<std::uint32_t>& screen, int width, int height)
{
    Picture picture(width, height);
    Conversion(width).update(picture, {0, 0, width, height}, screen.data(),
                             static_cast<std::size_t>(width));
    return picture;
}

std::uint32_t over(std::uint32_t sprite, std::uint32_t below, double opacity)
{
    const double through = 1 - (sprite >> 24) / 255.0 * opacity;
    std::uint32_t result = 0;
    for (const int shift : {0, 8, 16}) {
        const double value = (sprite >> shift & 0xff) * opacity + (below >> shift & 0xff) * through;
        result |= static_cast<std::uint32_t>(std::lround(value)) << shift;
    }
    return result;
}

Sprite noisySprite(int width, int height)
{
    std::mt19937 random(7);
    Sprite sprite{width, height, {}};
    for (int i = 0; i < width * height; ++i) {
        const std::uint32_t alpha = i % 3 == 0 ? 255 : random() % 256;
        std::uint32_t pixel = alpha << 24;
        for (const int shift : {0, 8, 16})
            pixel |= static_cast<std::uint32_t>(random() % (alpha + 1)) << shift;
        sprite.pixels.push_back(pixel);
    }
    return sprite;
}

TEST(Sprite, DrawnOverAPictureIsThePictureOfItDrawnOverTheScreen)
{
    constexpr int width = 40;
    constexpr int height = 30;
    std::mt19937 random(8);
    std::vector<std::uint32_t> screen;
    for (int i = 0; i < width * height; ++i)
        screen.push_back(static_cast<std::uint32_t>(random()) & 0xffffff);
    const Sprite sprite = noisySprite(9, 7);
    for (const auto& [x, y] :
         {std::pair{4, 6}, {5, 7}, {-3, -2}, {-9, 0}, {36, 27}, {39, 29}, {100, 3}, {3, -100}})
    {
        for (const double opacity : {1.0, .5}) {
            SCOPED_TRACE(std::to_string(x) + ',' + std::to_string(y));
            auto composed = screen;
            for (int row = 0; row < sprite.height; ++row) {
                for (int column = 0; column < sprite.width; ++column) {
                    if (x + column < 0 || y + row < 0 || x + column >= width || y + row >= height)
                        continue;
                    std::uint32_t& pixel =
                        composed[static_cast<std::size_t>((y + row) * width + x + column)];
                    pixel =
                        over(sprite.pixels[static_cast<std::size_t>(row * sprite.width + column)],
                             pixel, opacity);
                }
            }
            const Picture expected = pictureOf(composed, width, height);
            Picture actual = pictureOf(screen, width, height);
            draw(actual, sprite, x, y, opacity);
            for (int row = 0; row < height; ++row) {
                for (int column = 0; column < width; ++column)
                    ASSERT_NEAR(actual.lumaRow(row)[column], expected.lumaRow(row)[column], 2)
                        << column << ',' << row;
            }
            // Below a block the sprite's share is spread evenly, so colours of single pixels mix.
            for (int row = 0; row < height / 2; ++row) {
                for (int column = 0; column < width / 2; ++column) {
                    const bool isUntouched = 2 * column + 1 < x || 2 * column >= x + sprite.width ||
                                             2 * row + 1 < y || 2 * row >= y + sprite.height;
                    const int allowed = isUntouched ? 0 : 45;
                    ASSERT_NEAR(actual.colourRow(Blue, row)[column],
                                expected.colourRow(Blue, row)[column], allowed);
                    ASSERT_NEAR(actual.colourRow(Red, row)[column],
                                expected.colourRow(Red, row)[column], allowed);
                }
            }
        }
    }
}

TEST(Sprite, ColoursAreRightWhereTheScreenIsPlain)
{
    constexpr int side = 16;
    const std::vector<std::uint32_t> screen(side * side, 0x2060c0);
    const Sprite sprite{4, 4, std::vector<std::uint32_t>(16, 0x80402010)};
    auto composed = screen;
    for (int i = 0; i < 16; ++i)
        composed[static_cast<std::size_t>((5 + i / 4) * side + 3 + i % 4)] =
            over(0x80402010, 0x2060c0, 1);
    const Picture expected = pictureOf(composed, side, side);
    Picture actual = pictureOf(screen, side, side);
    draw(actual, sprite, 3, 5);
    for (int row = 0; row < side / 2; ++row) {
        for (int column = 0; column < side / 2; ++column) {
            ASSERT_NEAR(actual.colourRow(Blue, row)[column], expected.colourRow(Blue, row)[column],
                        2);
            ASSERT_NEAR(actual.colourRow(Red, row)[column], expected.colourRow(Red, row)[column],
                        2);
        }
    }
}

TEST(Ring, IsAnEmptyCircleOfItsScale)
{
    for (const double scale : {1.0, 1.5, 2.0}) {
        const Sprite ring = makeRing(scale);
        ASSERT_EQ(ring.width, ring.height);
        ASSERT_EQ(ring.pixels.size(), static_cast<std::size_t>(ring.width * ring.height));
        const int middle = ring.width / 2;
        const auto alpha = [&](double x, double y) {
            return ring.pixels[static_cast<std::size_t>(std::lround(middle + y)) *
                                   static_cast<std::size_t>(ring.width) +
                               static_cast<std::size_t>(std::lround(middle + x))] >>
                   24;
        };
        EXPECT_EQ(alpha(0, 0), 0U);
        EXPECT_EQ(alpha(10 * scale, 0), 0U);
        EXPECT_EQ(alpha(-middle, -middle), 0U);
        EXPECT_GT(alpha(18 * scale, 0), 200U);
        EXPECT_GT(alpha(0, -18 * scale), 200U);
        EXPECT_GT(alpha(-12.7 * scale, 12.7 * scale), 200U);
        for (const std::uint32_t pixel : ring.pixels) {
            for (const int shift : {0, 8, 16})
                ASSERT_LE(pixel >> shift & 0xff, pixel >> 24); // multiplied by the alpha
        }
    }
}

} // namespace
