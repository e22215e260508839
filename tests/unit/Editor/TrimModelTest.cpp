#include "Editor/TrimModel.h"
#include "Editor/FrameGrid.h"

#include <gtest/gtest.h>

#include <utility>

using Handle = TrimModel::Handle;

namespace {

/// Frames that are not equally long: the third one lasts a second, the last half a second.
FrameGrid uneven()
{
    return {{0, 0.1, 0.2, 1.2, 1.25, 1.5}, 2};
}

TrimModel chosen(FrameGrid frames, double start, double end)
{
    TrimModel model(std::move(frames));
    model.move(Handle::end, end);
    model.move(Handle::start, start);
    return model;
}

} // namespace

TEST(FrameGrid, KnowsWhichFrameShows)
{
    const FrameGrid grid = uneven();
    EXPECT_EQ(grid.frameAt(-1), 0);
    EXPECT_EQ(grid.frameAt(0.09), 0);
    EXPECT_EQ(grid.frameAt(0.1), 1);
    EXPECT_EQ(grid.frameAt(0.0999999), 1); // as times get rounded
    EXPECT_EQ(grid.frameAt(1.1), 2);
    EXPECT_EQ(grid.frameAt(7), 5);
    EXPECT_EQ(grid.startOf(3), 1.2);
    EXPECT_EQ(grid.startOf(6), 2);
}

TEST(FrameGrid, TheNearestBoundaryMayBeTheEnd)
{
    const FrameGrid grid = uneven();
    EXPECT_EQ(grid.nearest(0.69), 2);
    EXPECT_EQ(grid.nearest(0.71), 3);
    EXPECT_EQ(grid.nearest(1.74), 5);
    EXPECT_EQ(grid.nearest(1.8), 6);
    EXPECT_EQ(grid.nearest(-3), 0);
    EXPECT_EQ(grid.nearest(30), 6);
}

TEST(FrameGrid, TheFirstFrameShowsFromTheBeginning)
{
    const FrameGrid late({0.07, 0.1}, 0.2);
    EXPECT_EQ(late.startOf(0), 0);
    EXPECT_EQ(late.frameAt(0.01), 0);
}

TEST(FrameGrid, OfNothingIsOneFrame)
{
    EXPECT_EQ(FrameGrid().count(), 1);
    EXPECT_EQ(FrameGrid({}, 3).count(), 1);
    EXPECT_EQ(FrameGrid({}, 3).duration(), 3);
    EXPECT_EQ(FrameGrid({0, 5}, 1).duration(), 5); // a duration that makes no sense
    EXPECT_EQ(FrameGrid::even(2).count(), 60);
    EXPECT_EQ(FrameGrid::even(0.001).count(), 1);
    EXPECT_EQ(FrameGrid::even(2, 10).count(), 20);
    EXPECT_EQ(FrameGrid::even(0.3 * 100 / 10, 10).count(), 30);
    EXPECT_EQ(FrameGrid::even(2.05, 10).count(), 21); // the last one is shorter
    EXPECT_EQ(FrameGrid::even(2, 90000).count(), 60); // no film has that
}

TEST(TrimModel, BeginsWithTheWholeFilm)
{
    const TrimModel model(uneven());
    EXPECT_EQ(model.range(), (FilmRange{0, 2}));
    EXPECT_TRUE(model.isWhole());
}

TEST(TrimModel, HandlesStandWhereFramesBegin)
{
    TrimModel model(uneven());
    model.move(Handle::start, 0.16);
    model.move(Handle::end, 1.24);
    EXPECT_EQ(model.range(), (FilmRange{0.2, 1.25}));
    EXPECT_FALSE(model.isWhole());
}

TEST(TrimModel, UnderTheEndsHandleIsTheLastFrameThatShows)
{
    TrimModel model(uneven());
    EXPECT_EQ(model.shownTime(Handle::start), 0);
    EXPECT_EQ(model.shownTime(Handle::end), 1.5);
    model.move(Handle::end, 1.2);
    EXPECT_EQ(model.shownTime(Handle::end), 0.2);
}

TEST(TrimModel, HandlesNeverPassEachOther)
{
    TrimModel model(uneven());
    model.move(Handle::end, 1.2);
    model.move(Handle::start, 1.9);
    EXPECT_EQ(model.range(), (FilmRange{0.2, 1.2}));
    model.move(Handle::end, -5);
    EXPECT_EQ(model.range(), (FilmRange{0.2, 1.2}));
    model.move(Handle::start, -5);
    model.move(Handle::end, -5);
    EXPECT_EQ(model.range(), (FilmRange{0, 0.1}));
}

TEST(TrimModel, StepsGoByFrames)
{
    TrimModel model(uneven());
    model.step(Handle::start, 3);
    EXPECT_EQ(model.range().start, 1.2);
    model.step(Handle::start, -1);
    EXPECT_EQ(model.range().start, 0.2);
    model.step(Handle::end, -2);
    EXPECT_EQ(model.range().end, 1.25);
    model.step(Handle::end, -10);
    EXPECT_EQ(model.range(), (FilmRange{0.2, 1.2}));
    model.step(Handle::end, 100);
    EXPECT_EQ(model.range().end, 2);
}

TEST(TrimModel, AGivenRangeIsTakenToFrames)
{
    EXPECT_EQ(chosen(uneven(), 0.11, 1.3).range(), (FilmRange{0.1, 1.25}));
    EXPECT_TRUE(chosen(uneven(), 0, 2).isWhole());
    // One that holds no frame holds one.
    EXPECT_EQ(chosen(uneven(), 1.5, 1.5).range(), (FilmRange{1.25, 1.5}));
}

TEST(TrimModel, TheRangeStaysWhenTheFramesBecomeKnown)
{
    TrimModel model(FrameGrid::even(2));
    model.setFrames(uneven());
    EXPECT_TRUE(model.isWhole());
    TrimModel part = chosen(FrameGrid::even(2), 0.3, 1.3);
    part.setFrames(uneven());
    EXPECT_EQ(part.range(), (FilmRange{0.2, 1.25}));
}

TEST(TrimModel, AFilmOfOneFrameCanOnlyBeWhole)
{
    TrimModel model(FrameGrid({0}, 3));
    model.move(Handle::start, 3);
    model.step(Handle::end, -1);
    EXPECT_EQ(model.range(), (FilmRange{0, 3}));
    EXPECT_TRUE(model.isWhole());
}

TEST(FilmLine, TimesAndPlacesAreTheSame)
{
    const FilmLine line{.duration = 10, .left = 20, .width = 200};
    EXPECT_EQ(line.x(0), 20);
    EXPECT_EQ(line.x(2.5), 70);
    EXPECT_EQ(line.x(99), 220);
    EXPECT_EQ(line.seconds(70), 2.5);
    EXPECT_EQ(line.seconds(-4), 0);
    EXPECT_EQ(line.seconds(999), 10);
    EXPECT_EQ((FilmLine{.duration = 0, .left = 5, .width = 100}.x(1)), 5);
    EXPECT_EQ((FilmLine{.duration = 9, .left = 5, .width = 0}.seconds(7)), 0);
}
