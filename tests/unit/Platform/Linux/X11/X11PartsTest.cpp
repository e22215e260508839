#include "Platform/Linux/X11/DesktopScale.h"
#include "Platform/Linux/X11/PixelFormat.h"
#include "Platform/Linux/X11/Screens.h"

#include <gtest/gtest.h>

#include <array>

using Geometry::TopLeftRect;

namespace {

using X11::ByteOrder;
using X11::desktopScale;
using X11::PixelFormat;
using X11::RgbReader;

TEST(DesktopScale, IsTheResourceByNinetySix)
{
    EXPECT_EQ(desktopScale("Xft.dpi:\t144\n"), 1.5);
    EXPECT_EQ(desktopScale("a:\tb\nXft.dpi:\t192\nc:\td\n"), 2);
    EXPECT_EQ(desktopScale("Xft.dpi:\t120"), 1.25);
    EXPECT_EQ(desktopScale("Xft.dpi:\t 120 \r\n"), 1.25);
    EXPECT_EQ(desktopScale("Xft.dpi:\t143.5\n"), 1.5);
    EXPECT_EQ(desktopScale("Xft.dpi:\t144\nXft.dpi:\t192\n"), 2);
    EXPECT_EQ(desktopScale("Xft.dpi:\t144\nXft.dpi:\tnonsense\n"), 1.5);
}

TEST(DesktopScale, IsOneWithoutAUsableResource)
{
    for (const char* const resources :
         {"", "\n\n", "Xft.dpi:\t", "Xft.dpi:\t72\n", "Xft.dpi:\t0\n", "Xft.dpi:\t-144\n",
          "Xft.dpi:\tnan\n", "Xft.dpi:\tinf\n", "Xft.dpi:\t1e300\n", "Xft.dpi:\t0x90\n",
          "Xft.dpi: 144\n", " Xft.dpi:\t144\n", "*dpi:\t144\n", "Xft.dpi:\t144x\n",
          "xXft.dpi:\t144\n"})
        EXPECT_EQ(desktopScale(resources), 1) << resources;
}

TEST(ScreenTableOfMonitors, CountsFromThePrimaryAndRoundsAsQtDoes)
{
    const auto table = X11::asTable(
        {{"P", {}, {1280, 10, 1280, 1024}, 1}, {"L", {}, {0, 57, 1280, 1024}, 1}}, 1.5);
    ASSERT_EQ(table.size(), 2U);
    EXPECT_EQ(table[0].frame, (TopLeftRect{0, 0, 853, 683}));
    EXPECT_EQ(table[1].frame, (TopLeftRect{-1280, 47, 853, 683}));
    EXPECT_EQ(table[1].pixels, (ScreenTable::PixelRect{0, 57, 1280, 1024}));
    EXPECT_EQ(table[1].scale, 1.5);
    EXPECT_EQ(table[1].name, "L");
    EXPECT_TRUE(X11::asTable({}, 2).empty());
    EXPECT_EQ(X11::asTable({{"tiny", {}, {0, 0, 1, 1}, 1}}, 100)[0].frame,
              (TopLeftRect{0, 0, 1, 1}));
}

std::array<int, 3> colourOf(const PixelFormat& format, std::vector<std::uint8_t> bytes)
{
    std::array<std::uint8_t, 3> rgb{};
    RgbReader(format).read(bytes.data(), 1, rgb.data());
    return {rgb[0], rgb[1], rgb[2]};
}

TEST(PixelFormat, ReadsEveryOrderAndSize)
{
    using Rgb = std::array<int, 3>;
    const auto least = ByteOrder::LeastSignificantFirst;
    const auto most = ByteOrder::MostSignificantFirst;
    EXPECT_EQ(colourOf({32, 32, least, 0xff0000, 0xff00, 0xff}, {3, 2, 1, 99}), (Rgb{1, 2, 3}));
    EXPECT_EQ(colourOf({32, 32, most, 0xff0000, 0xff00, 0xff}, {99, 1, 2, 3}), (Rgb{1, 2, 3}));
    EXPECT_EQ(colourOf({32, 32, least, 0xff, 0xff00, 0xff0000}, {1, 2, 3, 99}), (Rgb{1, 2, 3}));
    EXPECT_EQ(colourOf({32, 32, least, 0xff000000, 0xff0000, 0xff00}, {99, 3, 2, 1}),
              (Rgb{1, 2, 3}));
    EXPECT_EQ(colourOf({24, 32, least, 0xff0000, 0xff00, 0xff}, {3, 2, 1}), (Rgb{1, 2, 3}));
    EXPECT_EQ(colourOf({24, 32, most, 0xff0000, 0xff00, 0xff}, {1, 2, 3}), (Rgb{1, 2, 3}));
    // 5, 6 and 5 bits: full is 255, and the middle is near the middle.
    EXPECT_EQ(colourOf({16, 32, least, 0xf800, 0x7e0, 0x1f}, {0xff, 0xff}), (Rgb{255, 255, 255}));
    EXPECT_EQ(colourOf({16, 32, least, 0xf800, 0x7e0, 0x1f}, {0x10, 0x84}), (Rgb{131, 129, 131}));
    EXPECT_EQ(colourOf({16, 32, most, 0xf800, 0x7e0, 0x1f}, {0x84, 0x10}), (Rgb{131, 129, 131}));
    EXPECT_EQ(colourOf({16, 32, least, 0xf800, 0x7e0, 0x1f}, {0, 0}), (Rgb{0, 0, 0}));
    EXPECT_EQ(colourOf({8, 8, least, 0xe0, 0x1c, 0x03}, {0xff}), (Rgb{255, 255, 255}));
    // Ten bits each: 0x3ff, 0x004 and 0x203.
    EXPECT_EQ(colourOf({32, 32, least, 0x3ff << 20, 0x3ff << 10, 0x3ff}, {0x03, 0x12, 0xf0, 0x3f}),
              (Rgb{255, 1, 128}));
}

TEST(PixelFormat, WholeRowsReadLikeSinglePixels)
{
    const PixelFormat format;
    std::vector<std::uint8_t> row;
    for (int i = 0; i < 4 * 37; ++i)
        row.push_back(static_cast<std::uint8_t>(i * 89 + 7));
    for (std::size_t width = 1; width <= 37; ++width) {
        std::vector<std::uint8_t> rgb(3 * width + 1, 0xee);
        RgbReader(format).read(row.data(), width, rgb.data());
        for (std::size_t x = 0; x < width; ++x) {
            ASSERT_EQ(rgb[3 * x], row[4 * x + 2]);
            ASSERT_EQ(rgb[3 * x + 1], row[4 * x + 1]);
            ASSERT_EQ(rgb[3 * x + 2], row[4 * x]);
        }
        ASSERT_EQ(rgb.back(), 0xee) << "written past the end at width " << width;
    }
}

TEST(PixelFormat, RowsArePadded)
{
    EXPECT_EQ((PixelFormat{.bitsPerPixel = 32}.stride(5)), 20U);
    EXPECT_EQ((PixelFormat{.bitsPerPixel = 24}.stride(5)), 16U);
    EXPECT_EQ((PixelFormat{.bitsPerPixel = 16}.stride(5)), 12U);
    EXPECT_EQ((PixelFormat{.bitsPerPixel = 16, .scanlinePad = 8}.stride(5)), 10U);
    EXPECT_EQ((PixelFormat{.bitsPerPixel = 32}.stride(std::size_t{1} << 31)), std::size_t{1} << 33);
}

TEST(PixelFormat, KnowsWhatItCannotRead)
{
    EXPECT_TRUE(PixelFormat{}.isSupported());
    EXPECT_TRUE((PixelFormat{.redMask = 0x3ff00000, .greenMask = 0xffc00}.isSupported()));
    EXPECT_FALSE((PixelFormat{.bitsPerPixel = 4}.isSupported()));
    EXPECT_FALSE((PixelFormat{.bitsPerPixel = 0}.isSupported()));
    EXPECT_FALSE((PixelFormat{.scanlinePad = 0}.isSupported()));
    EXPECT_FALSE((PixelFormat{.redMask = 0}.isSupported()));
    EXPECT_FALSE((PixelFormat{.greenMask = 0xf0f0}.isSupported()));
    EXPECT_FALSE((PixelFormat{.blueMask = 0xffffffff}.isSupported()));
}

} // namespace
