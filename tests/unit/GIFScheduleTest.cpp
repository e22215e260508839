#include "GIFSchedule.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

using testing::DoubleNear;
using testing::ElementsAre;
using testing::Pointwise;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

std::vector<double> steps(int count, double step, double start = 0)
{
    std::vector<double> times;
    for (int i = 0; i < count; ++i)
        times.push_back(start + i * step);
    return times;
}

void expectSchedule(const GIFSchedule& schedule, const std::vector<double>& times, int delay)
{
    EXPECT_THAT(schedule.times, Pointwise(DoubleNear(1e-9), times));
    EXPECT_EQ(schedule.delay, delay);
}

std::size_t count(double duration)
{
    return GIFSchedule::of({0, duration}, 0).times.size();
}

} // namespace

TEST(GIFSchedule, IsTenFramesASecondUpTo24Seconds)
{
    expectSchedule(GIFSchedule::of({0, 3}, 100), steps(30, 0.1), 10);
    expectSchedule(GIFSchedule::of({1.5, 3}, 100), steps(30, 0.1, 1.5), 10);
    expectSchedule(GIFSchedule::of({0, 24}, 100), steps(240, 0.1), 10);
    EXPECT_EQ(count(2.99), 29U) << "what is begun does not count";
}

TEST(GIFSchedule, IsAbout240FramesOfWhatIsLonger)
{
    expectSchedule(GIFSchedule::of({0, 60}, 100), steps(240, 0.25), 25);
    expectSchedule(GIFSchedule::of({7, 600}, 1000), steps(240, 2.5, 7), 250);
    EXPECT_EQ(GIFSchedule::of({0, 31}, 100).delay, 13) << "12.917 hundredths";
    EXPECT_EQ(GIFSchedule::of({0, 27.5}, 100).delay, 11) << "11.458";
}

TEST(GIFSchedule, Is239FramesWhereTheProductIsALittleLess)
{
    EXPECT_EQ(count(25.1), 239U);
    EXPECT_EQ(count(26), 239U);
    EXPECT_EQ(count(44), 239U);
    EXPECT_EQ(count(25), 240U);
    EXPECT_EQ(count(45), 240U);
}

TEST(GIFSchedule, TakesWhatIsShorterForAFifthOfASecond)
{
    expectSchedule(GIFSchedule::of({0, 0.05}, 100), {0, 0.1}, 10);
    expectSchedule(GIFSchedule::of({5, 0.2}, 100), {5, 5.1}, 10);
    expectSchedule(GIFSchedule::of({0, 0.25}, 100), {0, 0.1}, 10);
    expectSchedule(GIFSchedule::of({0, 0}, 0), {0, 0.1}, 10);
    expectSchedule(GIFSchedule::of({0, 0}, -1), {0, 0.1}, 10);
}

TEST(GIFSchedule, OfARangeThatIsNoneIsOfTheWholeVideoFromItsStart)
{
    for (const double none : {infinity, -infinity, notANumber, 0.0, -1.0}) {
        expectSchedule(GIFSchedule::of({0, none}, 60), steps(240, 0.25), 25);
        expectSchedule(GIFSchedule::of({2, none}, 3), steps(30, 0.1, 2), 10);
    }
}

TEST(GIFSchedule, HasTimesOfWholeSixHundredths)
{
    const GIFSchedule schedule = GIFSchedule::of({0, 50.1}, 100);
    EXPECT_EQ(schedule.times[1], 125.0 / 600) << "125.25 ticks";
    EXPECT_EQ(schedule.times[3], 376.0 / 600) << "375.75 ticks";
}

TEST(GIFSchedule, BeginsWithItsRangeToTheBit)
{
    const GIFSchedule schedule = GIFSchedule::of({1.0 / 7, 3}, 100);
    EXPECT_EQ(schedule.times[0], 1.0 / 7) << "85.7 ticks";
    EXPECT_EQ(schedule.times[1], 1.0 / 7 + 60.0 / 600);
    const double frame = 100'003.0 / 90'000; // 666.7 ticks
    EXPECT_GE(GIFSchedule::of({frame + 1.0 / 1200, 3}, 100).times[0], frame + 1.0 / 1200);
}

TEST(GIFSchedule, KeepsDelaysWithinWhatAFileCanSay)
{
    EXPECT_EQ(GIFSchedule::of({0, 150'000}, 0).delay, 62'500);
    EXPECT_EQ(GIFSchedule::of({0, 1e9}, 0).delay, 65'535);
}

TEST(GIFScheduleDeathTest, OfNoLengthAtAllIsFatal)
{
    EXPECT_DEATH((void)GIFSchedule::of({0, infinity}, infinity), "Tamrik: ");
    EXPECT_DEATH((void)GIFSchedule::of({0, notANumber}, notANumber), "Tamrik: ");
}
