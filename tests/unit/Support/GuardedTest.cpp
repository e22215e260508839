#include "Support/Guarded.h"

#include "support/EventLoop.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

struct Counter {
    int calls = 0;
    QThread* thread = nullptr;

    std::function<void()> body()
    {
        return [this] {
            ++calls;
            thread = QThread::currentThread();
        };
    }
};

} // namespace

TEST(Guarded, RunsWhileTheOwnerLives)
{
    QObject owner;
    Counter counter;
    const auto callback = Guarded::any(&owner, counter.body());
    callback();
    callback();
    EXPECT_EQ(counter.calls, 2);
}

TEST(Guarded, DoesNothingOnceTheOwnerIsGone)
{
    auto owner = std::make_unique<QObject>();
    Counter counter;
    const auto callback = Guarded::any(owner.get(), counter.body());
    owner.reset();
    callback();
    EXPECT_EQ(counter.calls, 0);
}

TEST(Guarded, RunsOnceWhereOnceIsPromised)
{
    QObject owner;
    Counter counter;
    const auto callback = Guarded::once(&owner, counter.body());
    const auto copy = callback;
    callback();
    copy();
    EXPECT_EQ(counter.calls, 1);
}

TEST(Guarded, PassesItsArgumentsOn)
{
    QObject owner;
    QString heard;
    const auto callback =
        Guarded::once<const QString&, int>(&owner, [&heard](const QString& text, int number) {
            heard = text + QString::number(number);
        });
    callback(QStringLiteral("a"), 7);
    EXPECT_EQ(heard, QStringLiteral("a7"));
}

TEST(Guarded, AnotherThreadOnlyPostsToTheMainThread)
{
    QObject owner;
    Counter counter;
    const auto callback = Guarded::once(&owner, counter.body());
    std::thread(callback).join();
    EXPECT_EQ(counter.calls, 0);
    ASSERT_TRUE(runUntil([&] { return counter.calls > 0; }));
    EXPECT_EQ(counter.thread, QCoreApplication::instance()->thread());
}

TEST(Guarded, AnOwnerThatDiesBeforeThePostedCallStopsIt)
{
    auto owner = std::make_unique<QObject>();
    Counter counter;
    std::thread(Guarded::any(owner.get(), counter.body())).join();
    owner.reset();
    settle();
    EXPECT_EQ(counter.calls, 0);
}

TEST(Guarded, TheBodyMayDropItsOwnCallback)
{
    QObject owner;
    int calls = 0;
    std::function<void()> callback;
    callback = Guarded::any(&owner, [&] {
        callback = nullptr;
        ++calls;
    });
    const auto copy = callback;
    copy();
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(callback);
}

TEST(Guarded, AQueryFallsBackOnceTheOwnerIsGone)
{
    auto owner = std::make_unique<QObject>();
    const auto query = Guarded::query(owner.get(), false, [] { return true; });
    EXPECT_TRUE(query());
    owner.reset();
    EXPECT_FALSE(query());
}
