#include "ChipPlacement.h"

#include "support/Printers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Geometry::Point;
using Geometry::Rect;
using Geometry::Size;
using testing::ElementsAre;

namespace {

/// A screen with a dock below and a menu bar above.
constexpr Rect visible = {100, 25, 1440, 850};

ChipPlacement::Anchor at(ChipPosition position)
{
    return {position, {}};
}

ChipPlacement::Anchor at(Point custom)
{
    return {ChipPosition::custom, custom};
}

} // namespace

TEST(ChipSize, APictureIsFittedInto220By150)
{
    EXPECT_EQ(ChipPlacement::chipSize({2880, 1800}), (Size{220, 137.5}));
    EXPECT_EQ(ChipPlacement::chipSize({1000, 1500}), (Size{100, 150}));
    EXPECT_EQ(ChipPlacement::chipSize({360, 180}), (Size{220, 110})); // and not a hair more
}

TEST(ChipSize, ASmallPictureIsNotEnlargedButTheChipHasALeastSize)
{
    EXPECT_EQ(ChipPlacement::chipSize({40, 30}), (Size{100, 48}));
    EXPECT_EQ(ChipPlacement::chipSize({150, 60}), (Size{150, 60}));
}

TEST(ChipSize, TheLeastSizeDoesNotKeepProportions)
{
    EXPECT_EQ(ChipPlacement::chipSize({100, 2000}), (Size{100, 150}));
    EXPECT_EQ(ChipPlacement::chipSize({4000, 100}), (Size{220, 48}));
}

TEST(ChipSize, APictureOfNoSizeHasTheLeastOne)
{
    EXPECT_EQ(ChipPlacement::chipSize({0, 0}), (Size{100, 48}));
}

TEST(FirstSlot, StandsTheMarginAwayFromTheEdges)
{
    const Size chip = {200, 100};
    const auto origin = [&](ChipPosition position) {
        return ChipPlacement::firstSlotOrigin(at(position), chip, visible);
    };
    EXPECT_EQ(origin(ChipPosition::bottomLeft), (Point{124, 49}));
    EXPECT_EQ(origin(ChipPosition::bottomCenter), (Point{720, 49}));
    EXPECT_EQ(origin(ChipPosition::bottomRight), (Point{1316, 49}));
    EXPECT_EQ(origin(ChipPosition::topLeft), (Point{124, 751}));
    EXPECT_EQ(origin(ChipPosition::topCenter), (Point{720, 751}));
    EXPECT_EQ(origin(ChipPosition::topRight), (Point{1316, 751}));
}

TEST(FirstSlot, ACustomOriginIsKeptWithinTheVisibleFrame)
{
    const Size chip = {200, 100};
    const auto origin = [&](Point custom) {
        return ChipPlacement::firstSlotOrigin(at(custom), chip, visible);
    };
    EXPECT_EQ(origin({500, 300}), (Point{500, 300}));
    EXPECT_EQ(origin({-5000, -5000}), (Point{100, 25}));
    EXPECT_EQ(origin({5000, 5000}), (Point{1340, 775}));
}

TEST(FirstSlot, AChipTooLargeForTheFrameEndsAtItsUpperAndRightEdges)
{
    EXPECT_EQ(ChipPlacement::firstSlotOrigin(at(Point{24, 24}), {220, 150}, {0, 0, 120, 90}),
              (Point{-100, -60}));
}

TEST(Stack, GrowsUpwardsFromTheBottom)
{
    // Heights 90, 120 and 100, the newest last, on a frame that starts at y = 25.
    const auto origins = ChipPlacement::origins(at(ChipPosition::bottomRight),
                                                {{200, 90}, {150, 120}, {220, 100}}, visible);
    EXPECT_THAT(origins, ElementsAre(Point{1316, 293}, Point{1366, 161}, Point{1296, 49}));
}

TEST(Stack, GrowsDownwardsFromTheTop)
{
    const auto origins = ChipPlacement::origins(at(ChipPosition::topLeft),
                                                {{200, 90}, {150, 120}, {220, 100}}, visible);
    EXPECT_THAT(origins, ElementsAre(Point{124, 517}, Point{124, 619}, Point{124, 751}));
}

TEST(Stack, InTheMiddleEachChipIsCentredByItsOwnWidth)
{
    const auto origins =
        ChipPlacement::origins(at(ChipPosition::topCenter), {{200, 90}, {100, 100}}, visible);
    EXPECT_THAT(origins, ElementsAre(Point{720, 649}, Point{770, 751}));
}

TEST(Stack, ACustomOneInTheLowerHalfGrowsUpwards)
{
    const auto origins =
        ChipPlacement::origins(at(Point{600, 449}), {{200, 90}, {100, 120}}, visible);
    EXPECT_THAT(origins, ElementsAre(Point{600, 581}, Point{600, 449}));
}

TEST(Stack, ACustomOneOnTheMiddleLineGrowsDownwards)
{
    // The middle of the frame is at y = 450.
    const auto origins =
        ChipPlacement::origins(at(Point{600, 450}), {{200, 90}, {100, 120}}, visible);
    EXPECT_THAT(origins, ElementsAre(Point{600, 348}, Point{600, 450}));
}

TEST(Stack, ACustomOriginIsKeptWithinTheFrameByTheNewestChipsSize)
{
    // The upper edge of the newest is that of the frame; the older one hangs below it.
    const auto origins =
        ChipPlacement::origins(at(Point{9000, 9000}), {{220, 90}, {100, 120}}, visible);
    EXPECT_THAT(origins, ElementsAre(Point{1440, 653}, Point{1440, 755}));
}

TEST(Stack, ALongOneRunsPastTheFrame)
{
    const auto origins = ChipPlacement::origins(
        at(ChipPosition::bottomLeft), {{100, 150}, {100, 150}, {100, 150}}, {0, 0, 300, 300});
    EXPECT_THAT(origins, ElementsAre(Point{24, 348}, Point{24, 186}, Point{24, 24}));
}

TEST(Stack, OfNoChipsIsEmpty)
{
    EXPECT_TRUE(ChipPlacement::origins(at(ChipPosition::custom), {}, visible).empty());
}
