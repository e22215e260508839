#include "Movie/Core/Conversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using ScreenTable::PixelRect;
using enum Picture::Colour;

struct Yuv {
    double y;
    double u;
    double v;
};

/// As the standard has it, not rounded.
Yuv exact(std::uint32_t pixel)
{
    const double r = pixel >> 16 & 0xff;
    const double g = pixel >> 8 & 0xff;
    const double b = pixel & 0xff;
    const double luma = .2126 * r + .7152 * g + .0722 * b;
    return {16 + luma * 219 / 255, 128 + (b - luma) / 1.8556 * 224 / 255,
            128 + (r - luma) / 1.5748 * 224 / 255};
}

std::vector<std::uint32_t> noise(std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<std::uint32_t> pixels(count);
    for (std::uint32_t& pixel : pixels)
        pixel = static_cast<std::uint32_t>(random()); // the upper eight bits mean nothing
    return pixels;
}

void expectPicture(const Picture& picture, const std::vector<std::uint32_t>& screen, int width,
                   int height)
{
    const auto at = [&](int x, int y) {
        return exact(screen[static_cast<std::size_t>(std::min(y, height - 1) * width +
                                                     std::min(x, width - 1))]);
    };
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ASSERT_NEAR(picture.lumaRow(y)[x], at(x, y).y, 1) << x << ',' << y;
    }
    for (int y = 0; y < picture.height(); y += 2) {
        for (int x = 0; x < picture.width(); x += 2) {
            double u = 0;
            double v = 0;
            for (int i = 0; i < 4; ++i) {
                u += at(x + i % 2, y + i / 2).u / 4;
                v += at(x + i % 2, y + i / 2).v / 4;
            }
            ASSERT_NEAR(picture.colourRow(Blue, y / 2)[x / 2], u, 1) << x << ',' << y;
            ASSERT_NEAR(picture.colourRow(Red, y / 2)[x / 2], v, 1) << x << ',' << y;
        }
    }
}

TEST(Conversion, IsWhatTheStandardSaysAndRepeatsOddEdges)
{
    for (const auto& [width, height] :
         {std::pair{64, 32}, {1, 1}, {2, 1}, {1, 2}, {37, 21}, {3, 2}}) {
        SCOPED_TRACE(std::to_string(width) + 'x' + std::to_string(height));
        const auto screen = noise(static_cast<std::size_t>(width * height), 1);
        Picture picture(width, height);
        EXPECT_EQ(picture.width(), (width + 1) / 2 * 2);
        EXPECT_EQ(picture.height(), (height + 1) / 2 * 2);
        Conversion conversion(width);
        EXPECT_TRUE(conversion.update(picture, {0, 0, width, height}, screen.data(),
                                      static_cast<std::size_t>(width)));
        expectPicture(picture, screen, width, height);
    }
}

TEST(Conversion, BlackAndWhiteAreTheEndsOfTheRange)
{
    Picture picture(2, 2);
    Conversion conversion(2);
    const std::uint32_t white[] = {0xffffff, 0xffffff, 0xffffff, 0xffffff};
    conversion.update(picture, {0, 0, 2, 2}, white, 2);
    EXPECT_EQ(picture.lumaRow(0)[0], 235);
    EXPECT_EQ(picture.colourRow(Blue, 0)[0], 128);
    EXPECT_EQ(picture.colourRow(Red, 0)[0], 128);
    const std::uint32_t black[] = {0, 0, 0, 0};
    conversion.update(picture, {0, 0, 2, 2}, black, 2);
    EXPECT_EQ(picture.lumaRow(1)[1], 16);
}

TEST(Conversion, TouchesOnlyItsArea)
{
    constexpr int width = 21;
    constexpr int height = 15;
    auto screen = noise(width * height, 2);
    Picture picture(width, height);
    Conversion conversion(width);
    conversion.update(picture, {0, 0, width, height}, screen.data(), width);
    for (const PixelRect area :
         {PixelRect{4, 6, 8, 2}, {20, 0, 1, 15}, {0, 14, 21, 1}, {18, 12, 3, 3}}) {
        const auto patch = noise(static_cast<std::size_t>(area.width * area.height), 3);
        for (int y = 0; y < area.height; ++y) {
            for (int x = 0; x < area.width; ++x)
                screen[static_cast<std::size_t>((area.y + y) * width + area.x + x)] =
                    patch[static_cast<std::size_t>(y * area.width + x)];
        }
        EXPECT_TRUE(
            conversion.update(picture, area, patch.data(), static_cast<std::size_t>(area.width)));
        expectPicture(picture, screen, width, height);
    }
}

TEST(Conversion, SaysWhetherAnythingChanged)
{
    constexpr int width = 33;
    constexpr int height = 9;
    auto screen = noise(width * height, 4);
    for (std::uint32_t& pixel : screen)
        pixel &= 0x7f7f7f;
    Picture picture(width, height);
    Conversion conversion(width);
    const auto update = [&] {
        return conversion.update(picture, {0, 0, width, height}, screen.data(), width);
    };
    EXPECT_TRUE(update());
    EXPECT_FALSE(update());
    for (std::uint32_t& pixel : screen)
        pixel ^= 0xff000000; // means nothing
    EXPECT_FALSE(update());
    for (std::size_t i = 0; i < screen.size(); ++i) {
        screen[i] += 0x808080;
        EXPECT_TRUE(update()) << i;
        EXPECT_FALSE(update()) << i;
    }
}

} // namespace
