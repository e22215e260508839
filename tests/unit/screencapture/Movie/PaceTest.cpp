#include "Movie/Core/Pace.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr double frame = Pace::fastest;

/// Frames taken as soon as they may be, or as late as they have to be.
struct Taken {
    double time;
    bool isKey;
};

std::vector<Taken> take(Pace& pace, bool isBusy, double from, double until, double late = 0)
{
    std::vector<Taken> frames;
    for (double time = from; time < until;) {
        const bool isKey = pace.isKeyDue(time);
        pace.tookFrame(time, isKey);
        frames.push_back({time, isKey});
        time = std::max(time + 1e-6, (isBusy ? pace.earliest() : pace.latest()) + late);
    }
    return frames;
}

TEST(Pace, TheFirstFrameIsAKeyFrameAtOnceAndTheSecondOneSoon)
{
    Pace pace;
    EXPECT_EQ(pace.latest(), 0);
    EXPECT_EQ(pace.earliest(), 0);
    EXPECT_TRUE(pace.isKeyDue(0));
    pace.tookFrame(0, true);
    EXPECT_NEAR(pace.latest(), .1, .01);
}

TEST(Pace, SixtyASecondAtMostWithoutDriftingWhenAFrameIsLate)
{
    Pace pace;
    EXPECT_NEAR(static_cast<double>(take(pace, true, 0, 10).size()), 600, 2);
    Pace late;
    const auto frames = take(late, true, 0, 10, .004);
    EXPECT_NEAR(static_cast<double>(frames.size()), 600, 2);
}

TEST(Pace, AfterARestThereIsNoBurst)
{
    Pace pace;
    take(pace, true, 0, 1);
    pace.tookFrame(5, false);
    EXPECT_NEAR(pace.earliest(), 5 + frame, 1e-9);
}

TEST(Pace, LookingInVainCountsForTheRateAndNotForTheBeat)
{
    Pace pace;
    take(pace, false, 0, 2);
    const double latest = pace.latest();
    pace.lookedAt(2);
    EXPECT_NEAR(pace.earliest(), 2 + frame, 1e-9);
    EXPECT_EQ(pace.latest(), latest);
}

TEST(Pace, NeverMoreThanHalfASecondWithoutAFrameNorMoreThanASecondWithoutAKeyFrame)
{
    for (const bool isBusy : {false, true}) {
        for (const double late : {0.0, .003, .015}) {
            Pace pace;
            const auto frames = take(pace, isBusy, 0, 20, late);
            double lastKey = 0;
            double lastFrame = 0;
            int keys = 0;
            for (const Taken& each : frames) {
                EXPECT_LE(each.time - lastFrame, .5);
                lastFrame = each.time;
                if (!each.isKey)
                    continue;
                EXPECT_LE(each.time - lastKey, 1.0);
                lastKey = each.time;
                ++keys;
            }
            EXPECT_LE(keys, 23); // nor many more of these large ones
        }
    }
}

TEST(Pace, AMixOfRestAndMotionKeepsTheKeyFrames)
{
    Pace pace;
    double lastKey = 0;
    for (double time = 0; time < 20;) {
        const bool isKey = pace.isKeyDue(time);
        pace.tookFrame(time, isKey);
        if (isKey) {
            EXPECT_LE(time - lastKey, 1.0);
            lastKey = time;
        }
        const bool isBusy = static_cast<int>(time * 3) % 2 == 0;
        time = isBusy ? pace.earliest() + .003 : pace.latest();
    }
}

TEST(Pace, ASlowEncoderLowersTheRateEvenlyAndAFastOneRaisesItAgain)
{
    Pace pace;
    double time = 0;
    for (int i = 0; i < 60; ++i)
        pace.encoded(time += .025, .025);
    EXPECT_NEAR(pace.interval(), 2 * frame, 1e-9);
    for (int i = 0; i < 60; ++i)
        pace.encoded(time += .1, .1);
    EXPECT_NEAR(pace.interval(), 7 * frame, 1e-9);
    for (int i = 0; i < 60; ++i)
        pace.encoded(time += 3, 3);
    EXPECT_NEAR(pace.interval(), Pace::slowest, 1e-9);
    for (int i = 0; i < 200; ++i)
        pace.encoded(time += .02, .004);
    EXPECT_NEAR(pace.interval(), frame, 1e-9);
}

TEST(Pace, OneSlowFrameChangesNothing)
{
    Pace pace;
    for (int i = 0; i < 100; ++i) {
        pace.encoded(i * .02, i % 50 == 25 ? .04 : .006);
        ASSERT_NEAR(pace.interval(), frame, 1e-9);
    }
}

TEST(Pace, TheRateDoesNotSwingWhenTheEncoderIsJustAtTheLimit)
{
    Pace pace;
    double last = pace.interval();
    int changes = 0;
    for (int i = 0; i < 2000; ++i) {
        pace.encoded(i * .02, i % 2 == 0 ? .0131 : .0172);
        changes += pace.interval() != last;
        last = pace.interval();
    }
    EXPECT_EQ(changes, 1);
}

} // namespace
