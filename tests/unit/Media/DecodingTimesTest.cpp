#include "Media/FFmpeg/Export/DecodingTimes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

Av::Packet pictureAt(std::int64_t time)
{
    Av::Packet packet(av_packet_alloc());
    packet->pts = time;
    return packet;
}

/// When pictures are decoded that show at `times`, in the order of decoding.
std::vector<std::int64_t> decoded(DecodingTimes& order, const std::vector<std::int64_t>& times)
{
    std::vector<std::int64_t> result;
    const auto takeAll = [&] {
        while (const Av::Packet packet = order.next())
            result.push_back(packet->dts);
    };
    for (const std::int64_t time : times) {
        order.put(pictureAt(time));
        takeAll();
    }
    order.put(nullptr);
    takeAll();
    return result;
}

} // namespace

TEST(DecodingTimes, AreWhenPicturesShowWhereNoneIsOvertaken)
{
    DecodingTimes order;
    EXPECT_THAT(decoded(order, {5, 15, 40}), ElementsAre(5, 15, 40));
    EXPECT_FALSE(order.failure());
}

TEST(DecodingTimes, ComeEarlierByAsManyPicturesAsAreOvertaken)
{
    DecodingTimes order;
    EXPECT_THAT(decoded(order, {0, 40, 20, 10, 30, 80, 60}),
                ElementsAre(-22, -11, 0, 10, 20, 30, 40));
    EXPECT_FALSE(order.failure());
}

TEST(DecodingTimes, AreRefusedWhereTheOrderChangesLater)
{
    std::vector<std::int64_t> times;
    for (std::int64_t i = 0; i < 100; ++i)
        times.push_back(i * 10);
    times.insert(times.end(), {1020, 1000, 1010});
    DecodingTimes order;
    EXPECT_EQ(decoded(order, times).size(), 101U);
    EXPECT_THAT(order.failure().value_or(Failure{}).message, HasSubstr("order"));
    DecodingTimes expected(2);
    EXPECT_EQ(decoded(expected, times).size(), times.size());
    EXPECT_FALSE(expected.failure());
}

TEST(DecodingTimes, AreATickApartForPicturesAtOneTime)
{
    DecodingTimes order;
    EXPECT_THAT(decoded(order, {0, 10, 10, 20}), ElementsAre(0, 10, 11, 20));
    EXPECT_FALSE(order.failure());
}

TEST(DecodingTimes, AreRefusedOutOfAllTime)
{
    for (const std::int64_t time : {INT64_MAX, INT64_MIN + 1}) {
        DecodingTimes beyond;
        EXPECT_THAT(decoded(beyond, {0, time}), ElementsAre());
        EXPECT_THAT(beyond.failure().value_or(Failure{}).message, HasSubstr("out of range"));
    }
}
