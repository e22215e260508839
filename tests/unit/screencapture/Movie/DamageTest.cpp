#include "Movie/Core/Damage.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using ScreenTable::PixelRect;
using Rects = std::vector<PixelRect>;

const PixelRect area{100, 50, 1001, 701};

TEST(Damage, IsCutToTheAreaAndGrownToEvenCoordinates)
{
    EXPECT_EQ(Damage::parts({{103, 55, 3, 3}}, area), (Rects{{2, 4, 4, 4}}));
    EXPECT_EQ(Damage::parts({{0, 0, 5000, 5000}}, area), (Rects{{0, 0, 1001, 701}}));
    EXPECT_EQ(Damage::parts({{1100, 750, 1, 1}}, area), (Rects{{1000, 700, 1, 1}}));
    EXPECT_EQ(Damage::parts({{0, 0, 101, 51}}, area), (Rects{{0, 0, 2, 2}}));
}

TEST(Damage, OutsideIsNothing)
{
    EXPECT_EQ(Damage::parts({}, area), Rects{});
    EXPECT_EQ(Damage::parts({{0, 0, 100, 5000}, {0, 0, 5000, 50}}, area), Rects{});
    EXPECT_EQ(Damage::parts({{1101, 0, 9, 900}, {0, 751, 900, 9}}, area), Rects{});
}

TEST(Damage, WhatIsNearBecomesOneAndWhatIsFarStaysApart)
{
    EXPECT_EQ(Damage::parts({{100, 50, 10, 10}, {120, 50, 10, 10}}, area), (Rects{{0, 0, 30, 10}}));
    EXPECT_EQ(Damage::parts({{100, 50, 100, 100}, {1000, 650, 100, 100}}, area).size(), 2U);
    // A third one that meets both makes one of all.
    EXPECT_EQ(Damage::parts({{100, 50, 200, 200}, {900, 550, 200, 200}, {250, 200, 700, 400}}, area)
                  .size(),
              1U);
}

TEST(Damage, EveryPixelIsInExactlyOnePart)
{
    std::mt19937 random(5);
    const auto upTo = [&](int most) {
        return static_cast<int>(random() % static_cast<unsigned>(most + 1));
    };
    for (int round = 0; round < 200; ++round) {
        Rects changed;
        for (int i = upTo(round % 10 == 0 ? 100 : 8); i >= 0; --i)
            changed.push_back({upTo(1200), upTo(800), 1 + upTo(150), 1 + upTo(150)});
        const Rects parts = Damage::parts(changed, area);
        std::vector<int> covered(static_cast<std::size_t>(area.width * area.height));
        for (const PixelRect& part : parts) {
            ASSERT_EQ(part.x % 2, 0);
            ASSERT_EQ(part.y % 2, 0);
            ASSERT_TRUE(part.width % 2 == 0 || part.x + part.width == area.width);
            ASSERT_TRUE(part.height % 2 == 0 || part.y + part.height == area.height);
            for (int y = part.y; y < part.y + part.height; ++y) {
                for (int x = part.x; x < part.x + part.width; ++x)
                    ++covered.at(static_cast<std::size_t>(y * area.width + x));
            }
        }
        for (const int count : covered)
            ASSERT_LE(count, 1);
        for (const PixelRect& each : changed) {
            for (int y = std::max(each.y - area.y, 0);
                 y < std::min(each.y - area.y + each.height, area.height); ++y)
            {
                for (int x = std::max(each.x - area.x, 0);
                     x < std::min(each.x - area.x + each.width, area.width); ++x)
                    ASSERT_EQ(covered[static_cast<std::size_t>(y * area.width + x)], 1);
            }
        }
    }
}

} // namespace
