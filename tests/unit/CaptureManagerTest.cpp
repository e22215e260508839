#include "CaptureManager.h"

#include "Support/CaptureFiles.h"
#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "support/EventLoop.h"
#include "support/TestLog.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

/// Captures with a small program in the tool's place, which notes how it was called.
class CaptureManagerTest : public testing::Test {
protected:
    void SetUp() override
    {
        FakePlatform::reset();
        QDir(CaptureFiles::folder()).removeRecursively();
        useTool("printf '%s\\n' \"$0\" \"$@\" > \"$TOOL_NOTE\"\n"
                "for last; do :; done\n"
                "echo png > \"$last\"\n");
    }

    void useTool(const QByteArray& script)
    {
        const QString path = folder.filePath(QStringLiteral("screencapture"));
        QFile tool(path);
        ASSERT_TRUE(tool.open(QIODevice::WriteOnly | QIODevice::Truncate));
        tool.write("#!/bin/sh\n" + script);
        tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        FakePlatform::current().tool = {path, {{QStringLiteral("TOOL_NOTE"), note()}}};
    }

    QString note() const { return folder.filePath(QStringLiteral("note")); }

    QStringList noted() const
    {
        QFile file(note());
        return file.open(QIODevice::ReadOnly)
                   ? QString::fromUtf8(file.readAll()).trimmed().split(QLatin1Char('\n'))
                   : QStringList();
    }

    CaptureManager::Completion record()
    {
        return [this](const QUrl& file) { results.append(file); };
    }

    QTemporaryDir folder;
    FakeClock clock;
    CaptureManager manager{clock.clock()};
    QList<QUrl> results;
};

const Geometry::Rect anyRect = {100, 200, 300.4, 150.6};

} // namespace

TEST_F(CaptureManagerTest, RunsTheToolAndReportsItsFile)
{
    manager.captureRect(anyRect, record());
    EXPECT_TRUE(manager.isCapturing());
    EXPECT_TRUE(results.isEmpty());
    ASSERT_TRUE(runUntil([&] { return !results.isEmpty(); }));

    const QString path =
        CaptureFiles::folder() + QStringLiteral("/Tamrik 2024-03-05 at 14.07.09.png");
    EXPECT_EQ(results, QList<QUrl>{QUrl::fromLocalFile(path)});
    EXPECT_FALSE(manager.isCapturing());
    EXPECT_EQ(noted(),
              (QStringList{FakePlatform::current().tool.program, QStringLiteral("-x"),
                           QStringLiteral("-t"), QStringLiteral("png"), QStringLiteral("-R"),
                           QStringLiteral("100,549,300,151"), path}));
}

TEST_F(CaptureManagerTest, ASecondRequestGetsNothingAtOnceAndTheFirstCompletes)
{
    manager.captureRect(anyRect, record());
    bool refused = false;
    manager.captureRect(anyRect, [&](const QUrl& file) {
        EXPECT_TRUE(file.isEmpty());
        refused = true;
    });
    EXPECT_TRUE(refused);
    EXPECT_TRUE(results.isEmpty());
    ASSERT_TRUE(runUntil([&] { return !results.isEmpty(); }));
    EXPECT_FALSE(results.front().isEmpty());
}

TEST_F(CaptureManagerTest, NoScreenGivesNothingAtOnce)
{
    FakePlatform::current().screens.clear();
    manager.captureRect(anyRect, record());
    EXPECT_EQ(results, QList<QUrl>{QUrl()});
    EXPECT_FALSE(manager.isCapturing());
    EXPECT_TRUE(noted().isEmpty());
}

TEST_F(CaptureManagerTest, ThePrimaryScreenConvertsRectanglesOfAllScreens)
{
    FakePlatform::current().screens.push_back({.name = QStringLiteral("Below"),
                                               .frame = {0, -1080, 1920, 1080},
                                               .visibleFrame = {0, -1080, 1920, 1080},
                                               .scale = 2,
                                               .handle = nullptr});
    manager.captureRect({10, -500, 200, 100}, record());
    ASSERT_TRUE(runUntil([&] { return !results.isEmpty(); }));
    EXPECT_EQ(noted().at(5), QStringLiteral("10,1300,200,100"));
}

TEST_F(CaptureManagerTest, AToolThatDoesNotStartIsLoggedAndGivesNothingAtOnce)
{
    FakePlatform::current().tool.program = QStringLiteral("/nowhere/screencapture");
    manager.captureRect(anyRect, record());
    EXPECT_EQ(results, QList<QUrl>{QUrl()});
    EXPECT_FALSE(manager.isCapturing());
    const QStringList lines = TestLog::takeLines();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.front().startsWith(QStringLiteral("failed to launch screencapture: ")));
    EXPECT_TRUE(lines.front().contains(QStringLiteral("No such file")));
}

TEST_F(CaptureManagerTest, AToolThatIsKilledBeforeItWritesGivesNothing)
{
    useTool("kill -KILL $$\n");
    manager.captureRect(anyRect, record());
    ASSERT_TRUE(runUntil([&] { return !results.isEmpty(); }));
    EXPECT_EQ(results, QList<QUrl>{QUrl()});
    EXPECT_FALSE(manager.isCapturing());
}

TEST_F(CaptureManagerTest, OnlyTheFileDecidesNotTheExitStatus)
{
    useTool("for last; do :; done; echo png > \"$last\"; exit 1\n");
    manager.captureRect(anyRect, record());
    ASSERT_TRUE(runUntil([&] { return !results.isEmpty(); }));
    EXPECT_FALSE(results.front().isEmpty());
}

TEST_F(CaptureManagerTest, AFolderThatCannotBeCreatedEndsWithoutAFile)
{
    const QString pictures = QDir::homePath() + QStringLiteral("/Pictures");
    QDir(pictures).removeRecursively();
    QFile inTheWay(pictures);
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    useTool("for last; do :; done; echo png 2>/dev/null > \"$last\"\n");
    manager.captureRect(anyRect, record());
    ASSERT_TRUE(runUntil([&] { return !results.isEmpty(); }));
    EXPECT_EQ(results, QList<QUrl>{QUrl()});
    inTheWay.remove();
}

TEST_F(CaptureManagerTest, TheNextCaptureMayStartFromTheCompletion)
{
    manager.captureRect(anyRect, [this](const QUrl&) {
        clock.advance(std::chrono::seconds(1));
        manager.captureRect(anyRect, record());
    });
    ASSERT_TRUE(runUntil([&] { return !results.isEmpty(); }));
    EXPECT_TRUE(results.front().fileName().endsWith(QStringLiteral("14.07.10.png")));
}
