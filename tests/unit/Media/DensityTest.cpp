#include "Media/Density.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

TEST(Density, IsOneWhereNothingIsSaid)
{
    EXPECT_EQ(Density::pixelsPerPoint({}), 1);
    EXPECT_EQ(Density::pixelsPerPoint(0), 1);
    EXPECT_EQ(Density::pixelsPerPoint(1), 1) << "a placeholder";
    EXPECT_EQ(Density::pixelsPerPoint(-144), 1);
    EXPECT_EQ(Density::pixelsPerPoint(std::numeric_limits<double>::infinity()), 1);
    EXPECT_EQ(Density::pixelsPerPoint(std::nan("")), 1);
}

TEST(Density, IsTheScaleOfACaptureInSpiteOfWholeDotsAMetre)
{
    for (int eighths = 4; eighths <= 32; ++eighths) {
        const double dotsPerMetre = std::round(72 * eighths / 8.0 / 0.0254);
        EXPECT_EQ(Density::pixelsPerPoint(dotsPerMetre * 0.0254), eighths / 8.0);
    }
}

TEST(Density, SnapsWithinHalfAPercentAndNoFurther)
{
    EXPECT_EQ(Density::pixelsPerPoint(144 * 1.0049), 2);
    EXPECT_EQ(Density::pixelsPerPoint(144 * 0.9951), 2);
    EXPECT_DOUBLE_EQ(Density::pixelsPerPoint(144 * 1.0051), 2 * 1.0051);
    EXPECT_DOUBLE_EQ(Density::pixelsPerPoint(144 * 0.9949), 2 * 0.9949);
    EXPECT_DOUBLE_EQ(Density::pixelsPerPoint(96), 4 / 3.0);
    EXPECT_EQ(Density::pixelsPerPoint(9), 0.125);
}
