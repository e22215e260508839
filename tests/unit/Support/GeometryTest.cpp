#include "Support/Geometry.h"

#include <gtest/gtest.h>

namespace Geometry {
namespace {

TEST(Geometry, SpanningTakesCornersInAnyOrder)
{
    EXPECT_EQ(Rect::spanning({100, 100}, {40, 160}), (Rect{40, 100, 60, 60}));
    EXPECT_EQ(Rect::spanning({40, 160}, {100, 100}), (Rect{40, 100, 60, 60}));
}

TEST(Geometry, ContainsOwnsItsLeftAndBottomEdges)
{
    const Rect r{10, 20, 30, 40};
    EXPECT_TRUE(r.contains({10, 20}));
    EXPECT_FALSE(r.contains({40, 20}));
    EXPECT_FALSE(r.contains({10, 60}));
}

TEST(Geometry, ThePointerOnTheTopmostPixelIsInsideAndOnTheBottomEdgeIsNot)
{
    const Rect screen{0, 0, 1920, 1080};
    EXPECT_TRUE(screen.containsPointer({0, 1080}));
    EXPECT_FALSE(screen.containsPointer({0, 0}));
    EXPECT_FALSE(screen.containsPointer({1920, 500}));
}

TEST(Flip, TurnsAScreenBesideAndAboveThePrimaryOver)
{
    // The primary screen does not start at Qt's origin here: another one lies left of it.
    const Flip flip({1920, 100, 1280, 1024});
    EXPECT_EQ(flip.bottomLeftFromTopLeft(TopLeftRect{1920, 100, 1280, 1024}),
              (Rect{0, 0, 1280, 1024}));
    EXPECT_EQ(flip.bottomLeftFromTopLeft(TopLeftRect{0, 0, 1920, 1080}),
              (Rect{-1920, 44, 1920, 1080}));
    EXPECT_EQ(flip.bottomLeftFromTopLeft(TopLeftPoint{1920, 100}), (Point{0, 1024}));
}

TEST(Flip, ComesBackToWhereItStarted)
{
    const Flip flip({-300, 50, 1600, 900});
    const Rect r{12.5, -40, 300.25, 150};
    EXPECT_EQ(flip.bottomLeftFromTopLeft(flip.topLeftFromBottomLeft(r)), r);
    const Point p{-5, 17.5};
    EXPECT_EQ(flip.bottomLeftFromTopLeft(flip.topLeftFromBottomLeft(p)), p);
}

} // namespace
} // namespace Geometry
