#include "Movie/Core/Clicks.h"

#include <gtest/gtest.h>

namespace {

using Rings = std::vector<Clicks::Ring>;

TEST(Clicks, AreSeenForAWhileHoweverShort)
{
    Clicks clicks;
    clicks.press(1, 10);
    clicks.release(1, 10.001);
    EXPECT_TRUE(clicks.at(10.002).empty()); // nobody has said where
    clicks.pointerAt(5, 6);
    EXPECT_EQ(clicks.at(10.01), (Rings{{5, 6, 1}}));
    EXPECT_EQ(clicks.at(10.24), (Rings{{5, 6, 1}}));
    const Rings fading = clicks.at(10.325);
    ASSERT_EQ(fading.size(), 1U);
    EXPECT_NEAR(fading[0].opacity, .5, .01);
    EXPECT_TRUE(clicks.at(10.41).empty());
}

TEST(Clicks, GoWithThePointerWhileTheButtonIsDown)
{
    Clicks clicks;
    clicks.press(1, 0);
    clicks.pointerAt(1, 1);
    clicks.pointerAt(2, 3);
    EXPECT_EQ(clicks.at(60), (Rings{{2, 3, 1}}));
    clicks.release(1, 60);
    clicks.pointerAt(9, 9);
    EXPECT_EQ(clicks.at(60), (Rings{{2, 3, 1}}));
    EXPECT_TRUE(clicks.at(60.2).empty());
}

TEST(Clicks, SeveralButtonsAreSeveralRings)
{
    Clicks clicks;
    clicks.press(1, 0);
    clicks.pointerAt(1, 1);
    clicks.release(1, .01);
    clicks.press(3, .1);
    clicks.release(2, .11); // was never pressed
    clicks.pointerAt(7, 7);
    EXPECT_EQ(clicks.at(.12), (Rings{{1, 1, 1}, {7, 7, 1}}));
    EXPECT_EQ(clicks.at(5), (Rings{{7, 7, 1}}));
}

TEST(Clicks, APressWithoutItsReleaseDoesNotStayForEver)
{
    Clicks clicks;
    for (int i = 0; i < 100; ++i)
        clicks.press(1, i);
    clicks.pointerAt(0, 0);
    EXPECT_EQ(clicks.at(99.5).size(), 1U);
    for (int i = 0; i < 100; ++i)
        clicks.press(100 + i, 100);
    EXPECT_LE(clicks.at(100).size(), 16U);
}

} // namespace
