#include "Movie/Core/BoundedQueue.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace {

TEST(BoundedQueue, KeepsOrderAndEndsWhenItIsClosedAndEmpty)
{
    BoundedQueue<int> queue(3);
    for (const int i : {1, 2, 3})
        queue.push(i);
    EXPECT_FALSE(queue.hasRoom());
    queue.close();
    queue.push(4); // dropped
    for (const int i : {1, 2, 3})
        EXPECT_EQ(queue.pop(), i);
    EXPECT_EQ(queue.pop(), std::nullopt);
}

TEST(BoundedQueue, TakesOneThingThatIsTooHeavy)
{
    BoundedQueue<std::unique_ptr<int>> queue(3);
    queue.push(std::make_unique<int>(5), 100);
    EXPECT_FALSE(queue.hasRoom());
    EXPECT_EQ(**queue.pop(), 5);
    EXPECT_TRUE(queue.hasRoom());
}

TEST(BoundedQueue, WhoPushesWaitsForRoomAndWhoPopsForThings)
{
    BoundedQueue<int> queue(2);
    constexpr int count = 10000;
    std::thread pusher([&] {
        for (int i = 0; i < count; ++i)
            queue.push(i);
        queue.close();
    });
    int expected = 0;
    while (const std::optional<int> thing = queue.pop())
        EXPECT_EQ(*thing, expected++);
    EXPECT_EQ(expected, count);
    pusher.join();
}

TEST(BoundedQueue, ClosingFreesWhoWaits)
{
    BoundedQueue<int> full(1);
    full.push(1);
    std::thread pusher([&] { full.push(2); });
    BoundedQueue<int> empty(1);
    std::thread popper([&] { EXPECT_EQ(empty.pop(), std::nullopt); });
    full.close();
    empty.close();
    pusher.join();
    popper.join();
    EXPECT_EQ(full.pop(), 1);
    EXPECT_EQ(full.pop(), std::nullopt);
}

} // namespace
