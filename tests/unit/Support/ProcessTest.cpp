#include "Support/Process.h"

#include "support/EventLoop.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

Process::Command shell(const QString& script, const QMap<QString, QString>& environment = {})
{
    return {QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}, environment};
}

} // namespace

TEST(Process, ReportsItsEndOnceAndNeverWithinStart)
{
    Process process;
    int ends = 0;
    ASSERT_FALSE(process.start(shell(QStringLiteral("exit 3")), [&] { ++ends; }));
    EXPECT_EQ(ends, 0);
    ASSERT_TRUE(runUntil([&] { return ends > 0; }));
    settle();
    EXPECT_EQ(ends, 1);
}

TEST(Process, ReportsTheEndOfAKilledChild)
{
    Process process;
    bool ended = false;
    ASSERT_FALSE(process.start(shell(QStringLiteral("kill -KILL $$")), [&] { ended = true; }));
    EXPECT_TRUE(runUntil([&] { return ended; }));
}

TEST(Process, SaysWhyAProgramDoesNotStart)
{
    Process process;
    bool ended = false;
    const PossibleFailure failure =
        process.start({QStringLiteral("/nowhere/tool"), {}, {}}, [&] { ended = true; });
    ASSERT_TRUE(failure);
    EXPECT_NE(failure->message.find("No such file"), std::string::npos) << failure->message;
    settle();
    EXPECT_FALSE(ended);
}

TEST(Process, AddsToTheEnvironment)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("out"));
    Process process;
    bool ended = false;
    ASSERT_FALSE(process.start(
        shell(QStringLiteral("printf %s \"$WORD$HOME\" > \"$OUT\""),
              {{QStringLiteral("WORD"), QStringLiteral("a\nb;")}, {QStringLiteral("OUT"), file}}),
        [&] { ended = true; }));
    ASSERT_TRUE(runUntil([&] { return ended; }));
    QFile out(file);
    ASSERT_TRUE(out.open(QIODevice::ReadOnly));
    EXPECT_EQ(out.readAll(), "a\nb;" + qgetenv("HOME"));
}

TEST(Process, LetsAChildThatIsAboutToEndEndBeforeItGoes)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("out"));
    {
        Process process;
        ASSERT_FALSE(process.start(shell(QStringLiteral("sleep 0.1; echo done > \"$OUT\""),
                                         {{QStringLiteral("OUT"), file}}),
                                   [] { FAIL() << "told of an end after the owner was gone"; }));
    }
    EXPECT_TRUE(QFile::exists(file));
}
