#include "Support/ScreenTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>

using Geometry::TopLeftRect;

namespace ScreenTable {

void PrintTo(const PixelRect& r, std::ostream* out)
{
    *out << r.x << ',' << r.y << ' ' << r.width << 'x' << r.height;
}

} // namespace ScreenTable

namespace {

using ScreenTable::PixelRect;
using ScreenTable::place;
using ScreenTable::Placement;
using ScreenTable::Screen;
using Screens = std::vector<Screen>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// A screen as Qt reports it: native origin, size divided by the scale and rounded.
Screen screenAt(PixelRect pixels, double scale = 1, const char* name = "S")
{
    return {name,
            {static_cast<double>(pixels.x), static_cast<double>(pixels.y),
             std::round(pixels.width / scale), std::round(pixels.height / scale)},
            pixels,
            scale};
}

/// The pixels that a rectangle means when it goes through one screen, wherever they are.
PixelRect throughOnly(const Screen& screen, const TopLeftRect& points)
{
    const auto x = [&](double edge) {
        return static_cast<int>(
            std::round(screen.pixels.x + (edge - screen.frame.x) * screen.scale));
    };
    const auto y = [&](double edge) {
        return static_cast<int>(
            std::round(screen.pixels.y + (edge - screen.frame.y) * screen.scale));
    };
    return {x(points.x), y(points.y), x(points.right()) - x(points.x),
            y(points.bottom()) - y(points.y)};
}

/// The smallest rectangle around what of `pixels` lies on the screens.
PixelRect onScreens(const PixelRect& pixels, const Screens& screens)
{
    int left = pixels.x + pixels.width;
    int top = pixels.y + pixels.height;
    int right = pixels.x;
    int bottom = pixels.y;
    for (const Screen& screen : screens) {
        const int l = std::max(pixels.x, screen.pixels.x);
        const int t = std::max(pixels.y, screen.pixels.y);
        const int r = std::min(pixels.x + pixels.width, screen.pixels.x + screen.pixels.width);
        const int b = std::min(pixels.y + pixels.height, screen.pixels.y + screen.pixels.height);
        if (l >= r || t >= b)
            continue;
        left = std::min(left, l);
        top = std::min(top, t);
        right = std::max(right, r);
        bottom = std::max(bottom, b);
    }
    return {left, top, right - left, bottom - top};
}

/// How far apart the edges of two rectangles are that are farthest apart.
int farthestEdges(const PixelRect& a, const PixelRect& b)
{
    return std::max({std::abs(a.x - b.x), std::abs(a.y - b.y),
                     std::abs(a.x + a.width - b.x - b.width),
                     std::abs(a.y + a.height - b.y - b.height)});
}

std::optional<PixelRect> pixelsOf(TopLeftRect points, const Screens& screens)
{
    const std::optional<Placement> placement = place(points, screens);
    if (!placement)
        return std::nullopt;
    return placement->pixels;
}

TEST(ScreenTablePlace, EveryScaleMapsInnerEdgesOneByOne)
{
    struct Row {
        double scale;
        TopLeftRect points;
        PixelRect pixels;
    };
    const Row rows[] = {
        {1, {10, 20, 30, 40}, {10, 20, 30, 40}},
        {1, {10.4, 20.5, 30, 40}, {10, 21, 30, 40}},
        {1, {10.5, 20.49, 0.9, 1}, {11, 20, 0, 1}}, // thinner than a pixel: absent, see below
        {1.25, {10, 20, 30, 41}, {13, 25, 37, 51}}, // 12.5, 25, 50, 76.25
        {1.5, {1, 1, 1, 1}, {2, 2, 1, 1}},          // 1.5 and 3: the edges, not the width, round
        {1.5, {2, 3, 1, 2}, {3, 5, 2, 3}},
        {2, {10.25, 20.2, 0.5, 5}, {21, 40, 1, 10}}, // 20.5, 40.4, 21.5, 50.4
        {2, {0, 0, 1, 1}, {0, 0, 2, 2}},
    };
    for (const Row& row : rows) {
        const Screens screens{screenAt({0, 0, 1920, 1080}, row.scale)};
        const std::optional<Placement> placement = place(row.points, screens);
        if (row.pixels.width == 0) {
            EXPECT_FALSE(placement);
            continue;
        }
        ASSERT_TRUE(placement) << "scale " << row.scale;
        EXPECT_EQ(placement->pixels, row.pixels) << "scale " << row.scale;
        EXPECT_EQ(placement->scale, row.scale);
    }
}

TEST(ScreenTablePlace, HalvesRoundAwayFromZeroOnBothSides)
{
    const Screens screens{screenAt({0, 0, 100, 100}), screenAt({-100, 0, 100, 100})};
    EXPECT_EQ(pixelsOf({2.5, 2.5, 3, 3}, screens), (PixelRect{3, 3, 3, 3}));
    EXPECT_EQ(pixelsOf({-5.5, 2.5, 3, 3}, screens), (PixelRect{-6, 3, 3, 3}));
}

TEST(ScreenTablePlace, WholeScreenIsAWholeScreenAtEveryScale)
{
    const PixelRect sizes[] = {{0, 0, 1280, 1024}, {0, 0, 1366, 768},  {0, 0, 1920, 1080},
                               {0, 0, 3840, 2160}, {0, 0, 2559, 1441}, {-7, 13, 1279, 799}};
    for (const PixelRect& pixels : sizes) {
        for (const double scale : {0.75, 1.0, 1.125, 1.25, 4.0 / 3.0, 1.5, 1.75, 2.0, 2.5, 3.0}) {
            const Screen screen = screenAt(pixels, scale);
            EXPECT_EQ(pixelsOf(screen.frame, {screen}), pixels)
                << pixels.width << 'x' << pixels.height << " at " << scale;
        }
    }
}

TEST(ScreenTablePlace, RoundedFrameStillReachesTheLastPixel)
{
    // 1280x1024 at 1.5 is 853.33x682.67 points, which Qt reports as 853x683.
    const Screen screen = screenAt({0, 0, 1280, 1024}, 1.5);
    ASSERT_EQ(screen.frame, (TopLeftRect{0, 0, 853, 683}));
    EXPECT_EQ(pixelsOf({0, 0, 853, 683}, {screen}), (PixelRect{0, 0, 1280, 1024}));
    EXPECT_EQ(pixelsOf({852, 682, 1, 1}, {screen}), (PixelRect{1278, 1023, 2, 1}));
    EXPECT_EQ(pixelsOf({852, 681, 1, 1}, {screen}), (PixelRect{1278, 1022, 2, 1}));
    EXPECT_EQ(pixelsOf({0, 0, 852, 682}, {screen}), (PixelRect{0, 0, 1278, 1023}));
    EXPECT_EQ(pixelsOf({0, 0, 5000, 5000}, {screen}), (PixelRect{0, 0, 1280, 1024}));
}

TEST(ScreenTablePlace, ScreensLeftOfAndAboveThePrimary)
{
    const Screens screens{screenAt({0, 0, 1920, 1080}), screenAt({-1280, -24, 1280, 1024}),
                          screenAt({100, -768, 1024, 768})};
    EXPECT_EQ(pixelsOf({-1280, -24, 1280, 1024}, screens), (PixelRect{-1280, -24, 1280, 1024}));
    EXPECT_EQ(pixelsOf({-10.5, -3.25, 5, 5}, screens), (PixelRect{-11, -3, 5, 5}));
    EXPECT_EQ(pixelsOf({200, -100, 50, 60}, screens), (PixelRect{200, -100, 50, 60}));
    // Across two borders: one rectangle, whole.
    EXPECT_EQ(pixelsOf({-50, -50, 500, 400}, screens), (PixelRect{-50, -50, 500, 400}));
}

TEST(ScreenTablePlace, PrimaryOffTheRootsOrigin)
{
    // Points count from the primary's corner, pixels from the root window's.
    const Screens screens{{"P", {0, 0, 960, 540}, {1280, 200, 1920, 1080}, 2},
                          {"L", {-1280, -200, 640, 512}, {0, 0, 1280, 1024}, 2}};
    EXPECT_EQ(pixelsOf({0, 0, 10, 10}, screens), (PixelRect{1280, 200, 20, 20}));
    EXPECT_EQ(pixelsOf({-1280, -200, 10, 10}, screens), (PixelRect{0, 0, 20, 20}));
    EXPECT_EQ(pixelsOf({-700, -100, 60, 412}, screens), (PixelRect{1160, 200, 120, 824}));
}

TEST(ScreenTablePlace, MixedScalesGoThroughTheScreenThatHoldsMost)
{
    // Two of Qt's screens side by side: the right one keeps its native origin, so there is a hole
    // between 960 and 1920.
    const Screens screens{screenAt({0, 0, 1920, 1080}, 2), screenAt({1920, 0, 1280, 1024}, 1)};
    EXPECT_EQ(place({10, 10, 20, 20}, screens)->scale, 2);
    EXPECT_EQ(place({1930, 10, 20, 20}, screens)->scale, 1);
    EXPECT_EQ(pixelsOf({1930, 10, 20, 20}, screens), (PixelRect{1930, 10, 20, 20}));
    EXPECT_FALSE(place({1000, 10, 900, 500}, screens));

    // 60 points of it on the left one: at scale 2 it runs into the right one's pixels.
    EXPECT_EQ(pixelsOf({900, 0, 90, 100}, screens), (PixelRect{1800, 0, 180, 200}));
    // 100 points on the right one, 60 on the left: the left part lies at scale 1 from there.
    EXPECT_EQ(pixelsOf({900, 0, 1120, 100}, screens), (PixelRect{900, 0, 1120, 100}));
    // As much on both: the earlier one.
    EXPECT_EQ(place({900, 0, 1080, 100}, screens)->scale, 2);
    const Screens swapped{screens[1], screens[0]};
    EXPECT_EQ(place({900, 0, 1080, 100}, swapped)->scale, 1);
}

TEST(ScreenTablePlace, WhatRunsOffItsScreenNamesThePixelsThatItsScreenMeant)
{
    // At 1.25 the left screen, 1000 pixels wide, is 800 points: there is a hole up to 1000.
    const Screens screens{screenAt({0, 0, 1000, 800}, 1.25), screenAt({1000, 0, 1000, 800}, 1.25)};
    // 100 points on the left one, run off to the right by 600: pixels 875 to 1750.
    const TopLeftRect measured{700, 40, 700, 80};
    EXPECT_EQ(pixelsOf(measured, screens), (PixelRect{625, 50, 875, 100})); // through the wrong one
    const TopLeftRect named = ScreenTable::placeable(measured, screens[0], screens);
    EXPECT_EQ(pixelsOf(named, screens), (PixelRect{875, 50, 875, 100}));
    EXPECT_EQ(named, (TopLeftRect{900, 40, 700, 80}));
    // What place maps through the same screen stays as it is.
    const TopLeftRect within{700, 40, 150, 80};
    EXPECT_EQ(ScreenTable::placeable(within, screens[0], screens), within);
    EXPECT_EQ(ScreenTable::placeable(measured, screens[1], screens), measured);
}

TEST(ScreenTablePlace, WhateverIsMeasuredAcrossScreensIsNamedToWithinHalfAPoint)
{
    const double scales[] = {1, 1.25, 1.5, 2};
    const PixelRect primary{0, 0, 1000, 750};
    const PixelRect seconds[] = {
        {1000, 37, 701, 533}, {-701, -37, 701, 533}, {83, 750, 701, 533}, {83, -533, 701, 533}};
    int all = 0;
    int renamed = 0;
    int missed = 0;
    for (const PixelRect& second : seconds) {
        for (int i = 0; i < 2 * 4 * 4; ++i) {
            const Screens screens{screenAt(primary, scales[i / 4 % 4]),
                                  screenAt(second, scales[i % 4])};
            const Screen& on = screens[i < 16 ? 0 : 1];
            const Screen& other = screens[i < 16 ? 1 : 0];
            // Drags from all over the one screen to all over the other one.
            for (int step = 0; step < 10000; ++step) {
                const auto part = [step](int digit) { return (step / digit % 10 + 0.5) / 10; };
                const double x = std::round(on.frame.width * part(1));
                const double y = std::round(on.frame.height * part(10));
                const double toX = std::round(
                    (other.pixels.x - on.pixels.x + other.pixels.width * part(100)) / on.scale);
                const double toY = std::round(
                    (other.pixels.y - on.pixels.y + other.pixels.height * part(1000)) / on.scale);
                const TopLeftRect measured{on.frame.x + std::min(x, toX),
                                           on.frame.y + std::min(y, toY), std::abs(toX - x),
                                           std::abs(toY - y)};
                if (measured.width < 8 || measured.height < 8)
                    continue;
                const PixelRect meant = onScreens(throughOnly(on, measured), screens);
                const TopLeftRect named = ScreenTable::placeable(measured, on, screens);
                const std::optional<Placement> placed = place(named, screens);
                ASSERT_TRUE(placed);
                // Half a point of the screen that holds most, and each rounding's half a pixel.
                const double most = named == measured ? 0 : placed->scale / 2 + 1;
                ++all;
                renamed += named == measured ? 0 : 1;
                EXPECT_EQ(named.x, std::round(named.x));
                EXPECT_EQ(named.width, std::round(named.width));
                if (farthestEdges(placed->pixels, meant) <= most)
                    continue;
                ++missed;
                EXPECT_NE(on.scale, other.scale);
            }
        }
    }
    EXPECT_GT(renamed, all / 10);
    // Between screens of different scales a few have no name at all: those that cover half of both.
    EXPECT_LT(missed, all / 1000);
}

TEST(ScreenTablePlace, LShapedDesktopsAreCutToTheirBox)
{
    const Screens screens{screenAt({0, 0, 1920, 1080}), screenAt({1920, 56, 1280, 1024})};
    // The corner above the right screen exists in the root window; what is left spans both.
    EXPECT_EQ(pixelsOf({1900, -10, 100, 100}, screens), (PixelRect{1900, 0, 100, 90}));
    EXPECT_EQ(pixelsOf({1950, -10, 100, 100}, screens), (PixelRect{1950, 56, 100, 34}));
    EXPECT_FALSE(place({1950, 0, 100, 56}, screens));
    EXPECT_EQ(pixelsOf({-100, -100, 9000, 9000}, screens), (PixelRect{0, 0, 3200, 1080}));
}

TEST(ScreenTablePlace, PartlyOffIsCutAndWhollyOffIsAbsent)
{
    const Screens screens{screenAt({0, 0, 800, 600}, 1.25)};
    EXPECT_EQ(pixelsOf({-10, -10, 20, 20}, screens), (PixelRect{0, 0, 13, 13}));
    EXPECT_EQ(pixelsOf({632, 472, 20, 20}, screens), (PixelRect{790, 590, 10, 10}));
    EXPECT_FALSE(place({640, 0, 10, 10}, screens));
    EXPECT_FALSE(place({0, 480, 10, 10}, screens));
    EXPECT_FALSE(place({-10, 0, 10, 10}, screens));
    EXPECT_FALSE(place({0, -10, 10, 10}, screens));
    EXPECT_FALSE(place({0, 0, 10, 10}, {}));
}

TEST(ScreenTablePlace, EmptyAndNegativeSizesAreAbsent)
{
    const Screens screens{screenAt({0, 0, 800, 600})};
    EXPECT_FALSE(place({10, 10, 0, 10}, screens));
    EXPECT_FALSE(place({10, 10, 10, -0.0}, screens));
    EXPECT_FALSE(place({10, 10, -5, 10}, screens));
    EXPECT_FALSE(place({10.1, 10, 0.3, 10}, screens));
    EXPECT_TRUE(place({10.4, 10, 0.3, 10}, screens));
    EXPECT_EQ(pixelsOf({-0.0, -0.0, 5, 5}, screens), (PixelRect{0, 0, 5, 5}));
}

TEST(ScreenTablePlace, ValuesBeyondReasonNeitherOverflowNorMap)
{
    const Screens screens{screenAt({0, 0, 800, 600}, 2)};
    for (const double bad : {notANumber, infinity, -infinity}) {
        EXPECT_FALSE(place({bad, 0, 10, 10}, screens));
        EXPECT_FALSE(place({0, bad, 10, 10}, screens));
        EXPECT_FALSE(place({0, 0, bad, 10}, screens));
        EXPECT_FALSE(place({0, 0, 10, bad}, screens));
    }
    const PixelRect whole{0, 0, 800, 600};
    EXPECT_EQ(pixelsOf({-1e300, -1e300, 2e300, 2e300}, screens), whole);
    EXPECT_EQ(pixelsOf({-1e300, -1e9, 1.7e308, 3e9}, screens), whole);
    EXPECT_EQ(pixelsOf({0, 0, 1.7e308, 1.7e308}, screens), whole);
    EXPECT_FALSE(place({1e300, 0, 1e300, 10}, screens));
    EXPECT_FALSE(place({1.7e308, 0, 1.7e308, 10}, screens));
    EXPECT_FALSE(place({1e-300, 0, 1e-300, 10}, screens));
}

TEST(ScreenTablePlace, ScreensThatCannotBeReadCountForNothing)
{
    const TopLeftRect points{0, 0, 10, 10};
    const PixelRect pixels{0, 0, 800, 600};
    EXPECT_FALSE(place(points, {{"", {notANumber, 0, 800, 600}, pixels, 1}}));
    EXPECT_FALSE(place(points, {{"", {0, 0, infinity, 600}, pixels, 1}}));
    EXPECT_FALSE(place(points, {{"", {0, 0, 800, 600}, pixels, notANumber}}));
    EXPECT_FALSE(place(points, {{"", {0, 0, 800, 600}, {0, 0, 2147483647, 2147483647}, 1}}));
    // A frame so large that its areas are infinite is no reason to fail.
    EXPECT_EQ(pixelsOf(points, {{"", {-1e300, -1e300, 2e300, 2e300}, pixels, 1e-300}}),
              std::nullopt);
    EXPECT_EQ(pixelsOf({0, 0, 1e300, 1e300}, {{"", {0, 0, 1e300, 1e300}, pixels, 6e-298}}), pixels);
}

} // namespace
