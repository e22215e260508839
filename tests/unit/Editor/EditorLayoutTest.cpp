#include "Editor/EditorLayout.h"

#include "support/Printers.h"

#include <gtest/gtest.h>

TEST(EditorLayout, ASmallPictureOpensAtItsSizeInAWindowOfTheLeastWidth)
{
    const double s = EditorLayout::initialMagnification({400, 300}, {1440, 900});
    EXPECT_EQ(s, 1);
    EXPECT_EQ(EditorLayout::contentSize({400, 300}, s), (Geometry::Size{940, 346}));
}

TEST(EditorLayout, ALargePictureIsReducedToMostOfTheScreen)
{
    const double s = EditorLayout::initialMagnification({4000, 3000}, {1440, 900});
    EXPECT_NEAR(s, 0.2397, 0.00005);
    const Geometry::Size content = EditorLayout::contentSize({4000, 3000}, s);
    EXPECT_NEAR(content.width, 958.7, 0.05);
    EXPECT_NEAR(content.height, 765, 1e-9);
}

TEST(EditorLayout, OnASmallScreenAWindowAndItsPictureAreNoWiderThanThat)
{
    const Geometry::Rect visible{0, 20, 910, 480};
    const double s = EditorLayout::initialMagnification({1000, 100}, visible.size());
    EXPECT_EQ(s, 0.91);
    EXPECT_EQ(EditorLayout::placed(EditorLayout::contentSize({1000, 100}, s), visible),
              (Geometry::Rect{0, 191.5, 910, 137}));
}

TEST(EditorLayout, AWindowStaysBelowItsTitleBar)
{
    EXPECT_EQ(EditorLayout::placed({940, 490}, {0, 0, 960, 520}),
              (Geometry::Rect{10, 2, 940, 490}));
    EXPECT_EQ(EditorLayout::placed({980, 640}, {0, 0, 960, 520}), (Geometry::Rect{0, 0, 960, 492}));
}
