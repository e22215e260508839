#include "Platform/Application.h"

#include <QCoreApplication>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>

namespace {

auto dispositionOf(int signal)
{
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

/// Runs the event loop, in which a signal comes; false when it goes on for ten seconds.
bool endsWith(int signal)
{
    QTimer::singleShot(0, [signal] { std::raise(signal); });
    QTimer patience;
    patience.setSingleShot(true);
    patience.callOnTimeout([] { QCoreApplication::exit(1); });
    patience.start(10'000);
    return QCoreApplication::exec() == 0;
}

} // namespace

TEST(EndingSignals, EndTheEventLoopOnceEachUnlessTheyAreIgnored)
{
    std::signal(SIGHUP, SIG_IGN); // as nohup does
    Platform::quitOnSignals();
    EXPECT_EQ(dispositionOf(SIGHUP), SIG_IGN);
    for (const int signal : {SIGTERM, SIGINT}) {
        ASSERT_NE(dispositionOf(signal), SIG_DFL);
        EXPECT_TRUE(endsWith(signal));
        // The next one would end the process.
        EXPECT_EQ(dispositionOf(signal), SIG_DFL);
    }
    std::signal(SIGHUP, SIG_DFL);
}
