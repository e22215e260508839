#include "Support/Log.h"

#include "support/TestLog.h"

#include <gtest/gtest.h>

TEST(Log, LinesReachTheSinkWithoutThePrefix)
{
    Log::line(QStringLiteral("export failed: disk full"));
    EXPECT_EQ(TestLog::takeLines(), QStringList{QStringLiteral("export failed: disk full")});
}

TEST(LogDeathTest, FatalWritesOnePrefixedLineAndAborts)
{
    EXPECT_EXIT(Log::fatal(QStringLiteral("no identifiers left — at all")),
                testing::KilledBySignal(SIGABRT), "^Tamrik: no identifiers left — at all\n$");
}

TEST(LogDeathTest, StandardErrorGetsOnePrefixedLine)
{
    EXPECT_EXIT(
        {
            Log::setSink({});
            Log::line(QStringLiteral("one"));
            Log::line(QStringLiteral("two, with its own end\n"));
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "^Tamrik: one\nTamrik: two, with its own end\n$");
}
