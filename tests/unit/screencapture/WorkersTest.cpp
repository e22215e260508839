#include "Png/Workers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <new>
#include <set>
#include <system_error>
#include <thread>
#include <vector>

#include <pthread.h>
#include <sched.h>

namespace {

TEST(Workers, DoEachPartOnce)
{
    for (const unsigned parts : {1U, 2U, 3U, 20U}) {
        std::vector<int> done(parts);
        Png::inParallel(parts, [&](unsigned part) { ++done.at(part); });
        EXPECT_EQ(done, std::vector<int>(parts, 1));
    }
}

TEST(Workers, AreThereAtTheSameTime)
{
    // Ends only if each waits for the other at the same time; the run's time limit ends it else.
    std::atomic<int> arrived = 0;
    Png::inParallel(2, [&](unsigned) {
        ++arrived;
        while (arrived < 2)
            sched_yield();
    });
    EXPECT_EQ(arrived, 2);
}

/// A stack larger than any address space, so that no thread can be started.
class NoThreads {
public:
    NoThreads()
    {
        pthread_getattr_default_np(&m_before);
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t{1} << 60);
        pthread_setattr_default_np(&attributes);
        pthread_attr_destroy(&attributes);
    }
    ~NoThreads()
    {
        pthread_setattr_default_np(&m_before);
        pthread_attr_destroy(&m_before);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    pthread_attr_t m_before;
};

TEST(Workers, ShareTheCallersThreadWhenNoOtherCanBeHad)
{
    const NoThreads noThreads;
    EXPECT_THROW(std::thread([] {}).detach(), std::system_error);
    std::vector<int> done(4);
    std::set<std::thread::id> threads;
    Png::inParallel(4, [&](unsigned part) {
        ++done.at(part);
        threads.insert(std::this_thread::get_id());
    });
    EXPECT_EQ(done, std::vector<int>(4, 1));
    EXPECT_EQ(threads, std::set<std::thread::id>{std::this_thread::get_id()});
}

TEST(Workers, WhatOneThrowsArrivesWhenAllHaveEnded)
{
    for (const unsigned thrower : {0U, 1U, 2U}) {
        std::atomic<int> ended = 0;
        const auto work = [&](unsigned part) {
            if (part == thrower)
                throw std::bad_alloc();
            ++ended;
        };
        EXPECT_THROW(Png::inParallel(3, work), std::bad_alloc) << thrower;
        EXPECT_EQ(ended, 2) << thrower;
    }
}

TEST(Workers, ProcessorsAreThoseThatTheProcessMayUse)
{
    cpu_set_t before;
    ASSERT_EQ(sched_getaffinity(0, sizeof before, &before), 0);
    EXPECT_EQ(Png::processors(), static_cast<unsigned>(std::min(CPU_COUNT(&before), 8)));

    cpu_set_t one;
    CPU_ZERO(&one);
    for (std::size_t cpu = 0; CPU_COUNT(&one) == 0; ++cpu) {
        if (CPU_ISSET(cpu, &before))
            CPU_SET(cpu, &one);
    }
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(Png::processors(), 1U);
    ASSERT_EQ(sched_setaffinity(0, sizeof before, &before), 0);
}

} // namespace
