#include "Platform/Linux/X11/ServerClock.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using X11::ServerClock;

namespace {

const ServerClock::Instant start{100h};

} // namespace

TEST(ServerClock, AnythingIsPossibleBeforeItIsKnown)
{
    EXPECT_TRUE(ServerClock().isPossible(0xffffffff, start));
}

TEST(ServerClock, WhatIsPastIsPossible)
{
    ServerClock clock;
    clock.note(5'000'000, start);
    EXPECT_TRUE(clock.isPossible(5'000'000, start));
    EXPECT_TRUE(clock.isPossible(4'000'000, start));
    EXPECT_TRUE(clock.isPossible(1, start));
}

TEST(ServerClock, AFutureThatHasNotComeIsNot)
{
    ServerClock clock;
    clock.note(27'000'000, start);
    EXPECT_FALSE(clock.isPossible(1'795'251'913, start)); // seconds since 1970
    EXPECT_FALSE(clock.isPossible(27'000'000 + 61'000, start));
    EXPECT_TRUE(clock.isPossible(27'000'000 + 59'000, start));
}

TEST(ServerClock, ItGoesOnWhileNothingHappens)
{
    ServerClock clock;
    clock.note(27'000'000, start);
    EXPECT_TRUE(clock.isPossible(27'000'000 + 7'200'000, start + 2h));
    EXPECT_FALSE(clock.isPossible(27'000'000 + 7'300'000, start + 2h));
}

TEST(ServerClock, ItStartsAnewAfterFortyNineDays)
{
    ServerClock clock;
    clock.note(0xffffff00, start);
    EXPECT_TRUE(clock.isPossible(200, start + 1s));
    EXPECT_TRUE(clock.isPossible(0xfffffe00, start));
    EXPECT_FALSE(clock.isPossible(200'000, start + 1s));
}

TEST(ServerClock, TheNewestReadingCounts)
{
    ServerClock clock;
    clock.note(1'000, start);
    clock.note(900'000, start + 1s);
    EXPECT_TRUE(clock.isPossible(910'000, start + 11s));
}
