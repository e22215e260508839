#include "Movie/Core/SoundTimeline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

constexpr int rate = SoundTimeline::rate;
constexpr std::size_t chunkFrames = 480;

/// A microphone whose samples are the times at which they were to be heard, so that where they end
/// up says how wrong that is.
struct Microphone {
    double start = .8;      // of the movie's time
    double speed = 1;       // of its clock
    std::int64_t given = 0; // frames
    double true_(std::int64_t frame) const
    {
        return start + static_cast<double>(frame) / rate / speed;
    }

    std::vector<float> chunk()
    {
        std::vector<float> sound;
        for (std::size_t i = 0; i < chunkFrames; ++i) {
            const auto value = static_cast<float>(true_(given + static_cast<std::int64_t>(i)));
            sound.insert(sound.end(), {value, -value});
        }
        given += chunkFrames;
        return sound;
    }
};

std::vector<float> takeAll(SoundTimeline& timeline)
{
    std::vector<float> all;
    for (;;) {
        const std::vector<float> some = timeline.take(1);
        if (some.empty())
            return all;
        all.insert(all.end(), some.begin(), some.end());
    }
}

/// Feeds `seconds` of sound, of which the server says times that are wrong by `wrong`.
void feed(SoundTimeline& timeline, Microphone& microphone, double seconds,
          const std::function<double(double time)>& wrong)
{
    const double end = microphone.true_(microphone.given) + seconds;
    while (microphone.true_(microphone.given) < end) {
        const double time = microphone.true_(microphone.given);
        timeline.add(microphone.chunk(), time + wrong(time));
        timeline.passTo(microphone.true_(microphone.given) + .02);
    }
}

void expectInTime(const std::vector<float>& sound, double from, double until, double tolerance)
{
    for (auto i = static_cast<std::size_t>(from * rate); i < static_cast<std::size_t>(until * rate);
         ++i)
    {
        ASSERT_LT(2 * i + 1, sound.size());
        ASSERT_NEAR(sound[2 * i], static_cast<double>(i) / rate, tolerance);
        ASSERT_EQ(sound[2 * i + 1], -sound[2 * i]);
    }
}

void expectSilence(const std::vector<float>& sound, double from, double until)
{
    for (auto i = static_cast<std::size_t>(from * rate); i < static_cast<std::size_t>(until * rate);
         ++i)
    {
        ASSERT_LT(2 * i + 1, sound.size());
        ASSERT_EQ(sound[2 * i], 0) << i;
    }
}

TEST(SoundTimeline, IsSilentUntilTheMicrophoneGivesSomethingAndThenInTime)
{
    SoundTimeline timeline;
    Microphone microphone;
    feed(timeline, microphone, 4, [](double) { return 0; });
    timeline.finish(4.8);
    const auto sound = takeAll(timeline);
    EXPECT_EQ(sound.size(), std::size_t{2} * 230400);
    expectSilence(sound, 0, .7999);
    expectInTime(sound, .801, 4.79, .001);
}

TEST(SoundTimeline, DoesNotBelieveTheFirstTimes)
{
    SoundTimeline timeline;
    Microphone microphone;
    feed(timeline, microphone, 3,
         [&](double time) { return time < microphone.start + .4 ? -.06 : 0; });
    timeline.finish(3.8);
    expectInTime(takeAll(timeline), .9, 3.7, .002);
}

TEST(SoundTimeline, DoesNotFollowEveryWaver)
{
    SoundTimeline timeline;
    Microphone microphone;
    int step = 0;
    feed(timeline, microphone, 4, [&](double) { return ++step % 2 == 0 ? .02 : -.02; });
    timeline.finish(4.8);
    const auto sound = takeAll(timeline);
    expectInTime(sound, .9, 4.7, .022);
    // Nothing was repeated, nothing left out.
    for (auto i = static_cast<std::size_t>(1.5 * rate); i < std::size_t{4} * rate; ++i)
        ASSERT_NEAR(sound[2 * i + 2] - sound[2 * i], 1.0 / rate, 2e-6);
}

TEST(SoundTimeline, StaysInTimeWithAClockThatDrifts)
{
    for (const double speed : {.999, 1.001}) {
        SoundTimeline timeline;
        Microphone microphone{.1, speed};
        feed(timeline, microphone, 40, [](double) { return 0; });
        timeline.finish(40);
        const auto sound = takeAll(timeline);
        expectInTime(sound, .2, 39.9, .015); // a thousandth of forty seconds would be .04
        for (auto i = static_cast<std::size_t>(.2 * rate); i < std::size_t{39} * rate; ++i)
            ASSERT_NEAR(sound[2 * i + 2] - sound[2 * i], 1.0 / rate, 4.5 / rate); // inaudible
    }
}

TEST(SoundTimeline, WhatIsLostBecomesSilenceOfItsLength)
{
    SoundTimeline timeline;
    Microphone microphone{.1};
    feed(timeline, microphone, 3, [](double) { return 0; });
    microphone.given += rate * 2; // two seconds are lost
    for (double now = 3.1; now < 5.1; now += .1)
        timeline.passTo(now);
    feed(timeline, microphone, 2, [](double) { return 0; });
    timeline.finish(7.1);
    const auto sound = takeAll(timeline);
    expectInTime(sound, .2, 3.09, .002);
    expectSilence(sound, 3.12, 5.09);
    expectInTime(sound, 5.11, 7.09, .002);
}

TEST(SoundTimeline, AMicrophoneThatGoesAwayLeavesSilence)
{
    SoundTimeline timeline;
    Microphone microphone{.1};
    feed(timeline, microphone, 1.5, [](double) { return 0; });
    timeline.passTo(9);
    auto sound = takeAll(timeline);
    EXPECT_NEAR(static_cast<double>(sound.size()) / 2 / rate, 9 - SoundTimeline::patience, .02);
    timeline.finish(10);
    const auto rest = takeAll(timeline);
    sound.insert(sound.end(), rest.begin(), rest.end());
    EXPECT_EQ(sound.size(), std::size_t{20} * rate);
    expectInTime(sound, .2, 1.5, .002);
    expectSilence(sound, 1.7, 10);
}

TEST(SoundTimeline, OneThatGoesAwayBeforeItHasSettledLosesNothing)
{
    SoundTimeline timeline;
    Microphone microphone{.1};
    feed(timeline, microphone, .3, [](double) { return 0; });
    timeline.passTo(9);
    timeline.finish(9);
    const auto sound = takeAll(timeline);
    EXPECT_EQ(sound.size(), std::size_t{18} * rate);
    expectInTime(sound, .102, .39, .002);
}

TEST(SoundTimeline, SoundFromBeforeTheMovieIsCutOff)
{
    SoundTimeline timeline;
    Microphone microphone{-.5};
    feed(timeline, microphone, 3, [](double) { return 0; });
    timeline.finish(2.5);
    const auto sound = takeAll(timeline);
    expectInTime(sound, 0, 2.4, .002);
}

TEST(SoundTimeline, WithoutAnySoundThereIsSilence)
{
    SoundTimeline timeline;
    timeline.passTo(2);
    timeline.finish(3.5);
    const auto sound = takeAll(timeline);
    EXPECT_EQ(sound.size(), std::size_t{7} * rate);
    expectSilence(sound, 0, 3.5);
}

TEST(SoundTimeline, GivesWholeBlocksOnly)
{
    SoundTimeline timeline;
    timeline.finish(1023.0 / rate);
    EXPECT_TRUE(timeline.take(1024).empty());
    timeline.finish(1024.0 / rate);
    EXPECT_EQ(timeline.take(1024).size(), 2048U);
    EXPECT_TRUE(timeline.take(1).empty());
}

} // namespace
