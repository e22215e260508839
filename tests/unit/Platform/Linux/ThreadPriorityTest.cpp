#include "Platform/ThreadPriority.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

namespace {

int niceness()
{
    return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
}

} // namespace

TEST(ThreadPriority, IsLowForThatThreadAndThoseThatItStarts)
{
    const int before = niceness();
    ASSERT_LT(before, 19); // or there would be nothing to see
    int own = 0, child = 0;
    std::thread([&] {
        Platform::lowerThreadPriority();
        own = niceness();
        std::thread([&] { child = niceness(); }).join();
    }).join();
    EXPECT_EQ(own, std::min(before + 10, 19));
    EXPECT_EQ(child, own);
    EXPECT_EQ(niceness(), before);
}
