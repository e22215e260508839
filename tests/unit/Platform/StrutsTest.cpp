#include "Platform/Linux/X11/Struts.h"

#include <gtest/gtest.h>

namespace {

constexpr QSize root(3200, 1080);
const QRect left(0, 0, 1920, 1080);
const QRect right(1920, 0, 1280, 1024);

/// A band at the bottom of the left screen, 32 pixels deep.
constexpr X11::Strut bottomPanel = {{0, 0, 0, 32, 0, 0, 0, 0, 0, 0, 0, 1919}};

} // namespace

TEST(Struts, CutTheScreenThatTheyLieOn)
{
    EXPECT_EQ(X11::withoutStruts(left, root, {bottomPanel}), QRect(0, 0, 1920, 1048));
    EXPECT_EQ(X11::withoutStruts(right, root, {bottomPanel}), right);
}

TEST(Struts, AreMeasuredFromTheRootsEdgeNotTheScreens)
{
    // The right screen ends 56 pixels above the root's bottom edge.
    const X11::Strut panel = {{0, 0, 0, 56 + 24, 0, 0, 0, 0, 0, 0, 1920, 3199}};
    EXPECT_EQ(X11::withoutStruts(right, root, {panel}), QRect(1920, 0, 1280, 1000));
    EXPECT_EQ(X11::withoutStruts(left, root, {panel}), left);
}

TEST(Struts, CutEveryEdge)
{
    const X11::Strut sides = {{40, 0, 20, 0, 0, 1079, 0, 0, 0, 1919, 0, 0}};
    const X11::Strut far = {{0, 64, 0, 0, 0, 0, 0, 1023, 0, 0, 0, 0}};
    EXPECT_EQ(X11::withoutStruts(left, root, {sides, far}), QRect(40, 20, 1880, 1060));
    EXPECT_EQ(X11::withoutStruts(right, root, {sides, far}), QRect(1920, 0, 1280 - 64, 1024));
}

TEST(Struts, TheDeepestOfTwoOnOneEdgeCounts)
{
    const X11::Strut deeper = {{0, 0, 0, 50, 0, 0, 0, 0, 0, 0, 100, 200}};
    EXPECT_EQ(X11::withoutStruts(left, root, {deeper, bottomPanel}), QRect(0, 0, 1920, 1030));
}

TEST(Struts, ABandAcrossAnInnerEdgeCutsTheScreenItEndsIn)
{
    // A dock on the right screen's left edge: from the root's left edge all over the left screen.
    const X11::Strut dock = {{1920 + 48, 0, 0, 0, 0, 1023, 0, 0, 0, 0, 0, 0}};
    EXPECT_EQ(X11::withoutStruts(right, root, {dock}), QRect(1968, 0, 1232, 1024));
    EXPECT_EQ(X11::withoutStruts(left, root, {dock}), left);
}

TEST(Struts, NonsenseLeavesAScreen)
{
    const X11::Strut everything = {{1919, 3199, 1079, 1079, 0, 1079, 0, 1079, 0, 3199, 0, 3199}};
    EXPECT_EQ(X11::withoutStruts(left, root, {everything, bottomPanel}).isValid(), true);
    const X11::Strut huge = {
        {0xFFFFFFFF, 0, 0, 0xFFFFFFFF, 0, 0xFFFFFFFF, 0, 0, 0, 0, 0, 0xFFFFFFFF}};
    EXPECT_EQ(X11::withoutStruts(left, root, {huge}), left);
}
