#include "SelectionModel.h"

#include "support/Printers.h"

#include <gtest/gtest.h>

using Geometry::Point;
using Geometry::Rect;

namespace {

class SelectionModelTest : public testing::Test {
protected:
    SelectionModel model{{1000, 800}};

    void drag(Point from, Point to)
    {
        ASSERT_EQ(model.mouseDown(from), SelectionModel::Press::newSelection);
        model.beginDrag(from);
        model.mouseDragged(to);
    }

    /// A selection that waits to be adjusted.
    void select(Point from, Point to)
    {
        drag(from, to);
        ASSERT_EQ(model.mouseUp(), SelectionModel::Release::selected);
        model.enterAdjusting();
    }
};

} // namespace

TEST_F(SelectionModelTest, StartsIdleWithoutASelection)
{
    EXPECT_TRUE(model.isIn<SelectionModel::Idle>());
    EXPECT_EQ(model.selectionRect(), Rect{});
    EXPECT_FALSE(model.usableSelection());
    EXPECT_EQ(model.mouseUp(), SelectionModel::Release::nothing);
    EXPECT_FALSE(model.mouseDragged({5, 5}));
}

TEST_F(SelectionModelTest, ADragSpansItsTwoCorners)
{
    drag({100, 100}, {40, 160});
    EXPECT_EQ(model.selectionRect(), (Rect{40, 100, 60, 60}));
    EXPECT_TRUE(model.mouseDragged({150, 90}));
    EXPECT_EQ(model.selectionRect(), (Rect{100, 90, 50, 10}));
}

TEST_F(SelectionModelTest, SevenByAHundredIsNoSelection)
{
    drag({100, 100}, {107, 200});
    EXPECT_FALSE(model.usableSelection());
    EXPECT_EQ(model.mouseUp(), SelectionModel::Release::tooSmall);
}

TEST_F(SelectionModelTest, EightByEightIsOne)
{
    drag({100, 100}, {108, 108});
    EXPECT_EQ(model.usableSelection(), (Rect{100, 100, 8, 8}));
    EXPECT_EQ(model.mouseUp(), SelectionModel::Release::selected);
}

TEST_F(SelectionModelTest, AClickIsTooSmall)
{
    ASSERT_EQ(model.mouseDown({3, 4}), SelectionModel::Press::newSelection);
    model.beginDrag({3, 4});
    EXPECT_EQ(model.mouseUp(), SelectionModel::Release::tooSmall);
}

TEST_F(SelectionModelTest, ClearingDropsSelectionAndPhase)
{
    select({100, 100}, {200, 200});
    model.clear();
    EXPECT_TRUE(model.isIn<SelectionModel::Idle>());
    EXPECT_EQ(model.selectionRect(), Rect{});
}

TEST_F(SelectionModelTest, ACornerIsGrabbedFromSixteenPointsAway)
{
    select({100, 100}, {300, 300});
    ASSERT_EQ(model.mouseDown({100 - 16, 100}), SelectionModel::Press::adjusts);
    EXPECT_EQ(std::get<SelectionModel::Resizing>(model.phase()).anchor, (Point{300, 300}));
}

TEST_F(SelectionModelTest, SeventeenPointsAwayOutsideIsANewDrag)
{
    select({100, 100}, {300, 300});
    EXPECT_EQ(model.mouseDown({100 - 17, 100}), SelectionModel::Press::newSelection);
}

TEST_F(SelectionModelTest, SeventeenPointsAwayAlongTheEdgeIsAMove)
{
    select({100, 100}, {300, 300});
    ASSERT_EQ(model.mouseDown({117, 100 - 6}), SelectionModel::Press::adjusts);
    EXPECT_EQ(std::get<SelectionModel::Moving>(model.phase()).offset, (Point{17, -6}));
}

TEST_F(SelectionModelTest, SevenPointsOutsideAnEdgeIsANewDrag)
{
    select({100, 100}, {300, 300});
    EXPECT_EQ(model.mouseDown({200, 100 - 7}), SelectionModel::Press::newSelection);
}

TEST_F(SelectionModelTest, EachCornerLeavesTheOppositeOne)
{
    select({100, 100}, {300, 260});
    EXPECT_EQ(model.resizeAnchor({100, 100}), (Point{300, 260}));
    EXPECT_EQ(model.resizeAnchor({300, 100}), (Point{100, 260}));
    EXPECT_EQ(model.resizeAnchor({100, 260}), (Point{300, 100}));
    EXPECT_EQ(model.resizeAnchor({300, 260}), (Point{100, 100}));
    EXPECT_FALSE(model.resizeAnchor({200, 180}));
}

TEST_F(SelectionModelTest, TheFirstOfTwoNearCornersIsGrabbed)
{
    select({100, 100}, {110, 110});
    EXPECT_EQ(model.resizeAnchor({105, 105}), (Point{110, 110}));
}

TEST_F(SelectionModelTest, AResizeMayFlipOverItsAnchor)
{
    select({100, 100}, {300, 300});
    ASSERT_EQ(model.mouseDown({300, 300}), SelectionModel::Press::adjusts);
    EXPECT_TRUE(model.mouseDragged({50, 60}));
    EXPECT_EQ(model.selectionRect(), (Rect{50, 60, 50, 40}));
    EXPECT_EQ(model.mouseUp(), SelectionModel::Release::adjusted);
}

TEST_F(SelectionModelTest, AMoveStopsAtTheViewsEdges)
{
    select({100, 100}, {300, 200});
    ASSERT_EQ(model.mouseDown({200, 150}), SelectionModel::Press::adjusts);
    EXPECT_TRUE(model.mouseDragged({-500, 5000}));
    EXPECT_EQ(model.selectionRect(), (Rect{0, 700, 200, 100}));
    EXPECT_TRUE(model.mouseDragged({5000, -5000}));
    EXPECT_EQ(model.selectionRect(), (Rect{800, 0, 200, 100}));
    EXPECT_TRUE(model.mouseDragged({210, 155}));
    EXPECT_EQ(model.selectionRect(), (Rect{110, 105, 200, 100}));
}

TEST_F(SelectionModelTest, InAViewSmallerThanTheSelectionTheUpperBoundWins)
{
    // A drag that ran off its own screen.
    select({100, 100}, {1400, 200});
    ASSERT_EQ(model.mouseDown({500, 150}), SelectionModel::Press::adjusts);
    EXPECT_TRUE(model.mouseDragged({520, 150}));
    EXPECT_EQ(model.selectionRect().x, 1000 - 1300);
}

TEST_F(SelectionModelTest, MovingBackToWhereItWasChangesNothing)
{
    select({100, 100}, {300, 200});
    ASSERT_EQ(model.mouseDown({200, 150}), SelectionModel::Press::adjusts);
    EXPECT_FALSE(model.mouseDragged({200, 150}));
}

// A HUD of 300 by 40, in a view of 1000 by 800.

TEST_F(SelectionModelTest, TheHUDStandsFourteenPointsBelowTheSelection)
{
    select({400, 300}, {600, 500});
    EXPECT_EQ(model.hudOrigin({300, 40}), (Point{350, 300 - 40 - 14}));
}

TEST_F(SelectionModelTest, TheHUDStaysBelowAsLongAsTwelvePointsAreLeft)
{
    select({400, 66}, {600, 500});
    EXPECT_EQ(model.hudOrigin({300, 40}), (Point{350, 12}));
    model.clear();
    select({400, 65}, {600, 500});
    EXPECT_EQ(model.hudOrigin({300, 40}), (Point{350, 514}));
}

TEST_F(SelectionModelTest, TheHUDLiesInsideASelectionThatFillsTheView)
{
    select({0, 0}, {1000, 800});
    EXPECT_EQ(model.hudOrigin({300, 40}), (Point{350, 800 - 40 - 12}));
}

TEST_F(SelectionModelTest, TheHUDKeepsTwelvePointsFromTheSides)
{
    select({0, 300}, {50, 500});
    EXPECT_EQ(model.hudOrigin({300, 40}), (Point{12, 246}));
    model.clear();
    select({950, 300}, {1000, 500});
    EXPECT_EQ(model.hudOrigin({300, 40}), (Point{1000 - 300 - 12, 246}));
}

TEST_F(SelectionModelTest, AHUDWiderThanTheViewKeepsItsRightEnd)
{
    select({400, 300}, {600, 500});
    EXPECT_EQ(model.hudOrigin({990, 40}).x, 1000 - 990 - 12);
}
