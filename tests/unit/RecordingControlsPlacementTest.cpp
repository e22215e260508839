#include "RecordingControlsPlacement.h"

#include <gtest/gtest.h>

#include <limits>

using Geometry::Point;
using Geometry::Rect;
using RecordingControlsPlacement::origin;
using RecordingControlsPlacement::Screen;
using RecordingControlsPlacement::timeText;

namespace {

constexpr Geometry::Size size = {260, 40};

/// A panel of 30 points along the first one's top; the second one stands right of it, higher up.
const std::vector<Screen> screens = {{{0, 0, 1440, 900}, {0, 0, 1440, 870}},
                                     {{1440, 100, 1280, 800}, {1440, 100, 1280, 800}}};

} // namespace

TEST(RecordingControlsPlacement, BelowTheRectangleInItsMiddle)
{
    EXPECT_EQ(origin({400, 300, 500, 200}, size, screens), (Point{520, 246}));
    // Just enough room.
    EXPECT_EQ(origin({400, 66, 500, 200}, size, screens), (Point{520, 12}));
}

TEST(RecordingControlsPlacement, AboveItWhereThereIsNoRoomBelow)
{
    EXPECT_EQ(origin({400, 65.5, 500, 200}, size, screens), (Point{520, 279.5}));
    EXPECT_EQ(origin({400, 0, 500, 200}, size, screens), (Point{520, 214}));
    // Just enough room under the panel.
    EXPECT_EQ(origin({400, 0, 500, 804}, size, screens), (Point{520, 818}));
}

TEST(RecordingControlsPlacement, InTheCornerWhereThereIsNoRoomAtAll)
{
    EXPECT_EQ(origin({400, 0, 500, 804.5}, size, screens), (Point{1168, 12}));
    EXPECT_EQ(origin({0, 0, 1440, 900}, size, screens), (Point{1168, 12}));
}

TEST(RecordingControlsPlacement, StaysInsideTheVisibleFrame)
{
    EXPECT_EQ(origin({-100, 300, 200, 200}, size, screens), (Point{12, 246}));
    EXPECT_EQ(origin({1300, 300, 140, 200}, size, screens), (Point{1168, 246}));
    // On a screen too narrow for both margins the right one counts.
    EXPECT_EQ(origin({0, 300, 200, 200}, size, {{{0, 0, 270, 900}, {0, 0, 270, 900}}}),
              (Point{-2, 246}));
}

TEST(RecordingControlsPlacement, OnTheFirstScreenThatTheRectangleTouches)
{
    EXPECT_EQ(origin({1400, 300, 600, 200}, size, screens), (Point{1168, 246}));
    EXPECT_EQ(origin({1440, 300, 600, 200}, size, screens), (Point{1610, 246}));
    EXPECT_EQ(origin({1440, 110, 600, 200}, size, screens), (Point{1610, 324}));
    // None: the primary one.
    EXPECT_EQ(origin({5000, 300, 600, 200}, size, screens), (Point{1168, 246}));
}

TEST(RecordingControlsPlacement, WithoutAScreenThereIsNoPlace)
{
    EXPECT_FALSE(origin({0, 0, 100, 100}, size, {}));
}

TEST(RecordingControlsPlacement, TimesAreMinutesAndSeconds)
{
    EXPECT_EQ(timeText(0), QStringLiteral("0:00"));
    EXPECT_EQ(timeText(0.999), QStringLiteral("0:00"));
    EXPECT_EQ(timeText(59.9), QStringLiteral("0:59"));
    EXPECT_EQ(timeText(60), QStringLiteral("1:00"));
    EXPECT_EQ(timeText(3725), QStringLiteral("62:05"));
    EXPECT_EQ(timeText(360000), QStringLiteral("6000:00"));
}

TEST(RecordingControlsPlacementDeathTest, ATimeThatIsNoneIsFatal)
{
    EXPECT_DEATH(timeText(std::numeric_limits<double>::infinity()), "Tamrik: ");
    EXPECT_DEATH(timeText(std::numeric_limits<double>::quiet_NaN()), "Tamrik: ");
    EXPECT_DEATH(timeText(1e19), "Tamrik: ");
}
