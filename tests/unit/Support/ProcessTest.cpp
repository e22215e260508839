#include "Support/Process.h"

#include "support/EventLoop.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

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

TEST(Process, KillsAChildThatDoesNotEndOrLeavesItRunningAsIsSaid)
{
    for (const bool isLeft : {false, true}) {
        std::array<int, 2> pipe{};
        ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0);
        auto command = shell(QStringLiteral("trap 'echo done >&%1; exit' TERM; echo $$ >&%1;"
                                            "while :; do sleep 0.01; done")
                                 .arg(pipe[1]));
        command.sharedDescriptor = pipe[1];
        command.isLeftRunning = isLeft;
        command.grace = std::chrono::milliseconds(1);
        auto process = std::make_unique<Process>();
        ASSERT_FALSE(process->start(command, [] { FAIL() << "told of a child it gave up"; }));
        close(pipe[1]);
        QFile said;
        ASSERT_TRUE(said.open(pipe[0], QIODevice::ReadOnly | QIODevice::Unbuffered,
                              QFileDevice::AutoCloseHandle));
        const pid_t child = said.readLine().toInt();
        ASSERT_GT(child, 0);
        EXPECT_FALSE(process->waitForEnd());
        process.reset();
        EXPECT_EQ(kill(child, SIGTERM) == 0, isLeft);
        EXPECT_EQ(said.readAll(), isLeft ? "done\n" : ""); // to its end
    }
}

TEST(Process, InterruptsTheChild)
{
    Process process;
    bool ended = false;
    process.interrupt(); // nobody to interrupt
    auto command = shell(QStringLiteral("trap 'echo stopped >&2; exit' INT; echo on >&2;"
                                        "while :; do sleep 0.01; done"));
    command.keepsErrors = true;
    ASSERT_FALSE(process.start(command, [&] { ended = true; }));
    QByteArray said;
    ASSERT_TRUE(runUntil([&] { return (said += process.errors()).contains("on"); }));
    process.interrupt();
    ASSERT_TRUE(runUntil([&] { return ended; }));
    EXPECT_EQ(said + process.errors(), "on\nstopped\n");
    process.interrupt();
}

TEST(Process, SharesADescriptorWithThisChildAlone)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("shared")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    const auto says = [&](bool shared) {
        Process process;
        bool ended = false;
        auto command =
            shell(QStringLiteral("[ -e /proc/self/fd/%1 ] && echo yes >&2 || echo no >&2")
                      .arg(file.handle()));
        command.keepsErrors = true;
        command.sharedDescriptor = shared ? file.handle() : -1;
        EXPECT_FALSE(process.start(command, [&] { ended = true; }));
        EXPECT_TRUE(runUntil([&] { return ended; }));
        return process.errors();
    };
    EXPECT_EQ(says(true), "yes\n");
    EXPECT_EQ(says(false), "no\n");
}
