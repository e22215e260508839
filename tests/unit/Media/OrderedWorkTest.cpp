#include "Media/FFmpeg/Export/OrderedWork.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

namespace {

using Work = OrderedWork<std::size_t>;

} // namespace

TEST(OrderedWork, IsTakenInOrderWhoeverIsQuicker)
{
    // The first piece ends only when the second has.
    std::promise<void> second;
    const Work::Worker worker = [&, done = second.get_future().share()](std::size_t number) {
        if (number == 0)
            done.wait();
        if (number == 1)
            second.set_value();
        return number * 10;
    };
    Work work(4, {worker, worker});
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(work.take(), i * 10);
}

TEST(OrderedWork, DoesNotRunFarAhead)
{
    std::atomic<std::size_t> begun = 0;
    const Work::Worker worker = [&](std::size_t number) {
        begun = std::max(begun.load(), number + 1);
        return number;
    };
    Work work(1000, {worker});
    for (std::size_t i = 0; i < 500; ++i) {
        EXPECT_EQ(work.take(), i);
        EXPECT_LE(begun, i + 3);
    }
}

TEST(OrderedWork, EndsInTheMiddle)
{
    std::atomic<int> count = 0;
    const Work::Worker worker = [&](std::size_t number) {
        ++count;
        return number;
    };
    {
        Work work(1000, {worker, worker});
        work.take();
    }
    EXPECT_LT(count, 10);
}
