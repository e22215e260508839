// How often films are tried to be made of what an earlier run has left, and what comes then.

#include "unit/RecordingRecoveryFixture.h"

#include <cstdlib>
#include <functional>

#include <unistd.h>

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Pair;

namespace {

class RecordingAttemptsTest : public RecordingRecoveryFixture {};

} // namespace

TEST_F(RecordingAttemptsTest, ASegmentThatEndsTheProgramThreeTimesBecomesTheFileAsItIs)
{
    start();
    crash();
    for (int attempt = 1; attempt <= 3; ++attempt) {
        recover();
        ASSERT_EQ(exports.size(), static_cast<std::size_t>(attempt));
        EXPECT_EQ(lostAttempts(), attempt);
        const QByteArray whileExporting = contents(journalPath());
        // An end that is none of its doing does not count.
        makeManager();
        exports.back().completion = {};
        EXPECT_EQ(lostAttempts(), 0);
        write(journalPath(), whileExporting);
    }
    recover();
    EXPECT_EQ(exports.size(), 3u);
    ASSERT_TRUE(runUntil([this] { return !recovered.empty(); }));
    EXPECT_THAT(recovered, ElementsAre(Pair(QUrl::fromLocalFile(fallbackPath()), false)));
    EXPECT_EQ(contents(fallbackPath()), "film");
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingAttemptsTest, AnExitInTheMiddleOfAnAttemptDoesNotCount)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // runs this test anew in a process of its own
    start();
    crash();
    static std::function<int()> atLast;
    atLast = [this] {
        const int lost = lostAttempts();
        folder.remove();
        return lost;
    };
    // As Qt ends the program when the X server goes.
    EXPECT_EXIT(
        {
            std::atexit([] { _exit(10 + atLast()); });
            recover();
            std::exit(lostAttempts());
        },
        testing::ExitedWithCode(10), "");
}

TEST_F(RecordingAttemptsTest, ASegmentThatWasMovedWhenTheProgramEndedIsAnnounced)
{
    start();
    crash();
    ASSERT_TRUE(QFile::rename(run(0).file(), fallbackPath()));
    recover();
    ASSERT_TRUE(runUntil([this] { return !recovered.empty(); }));
    EXPECT_THAT(recovered, ElementsAre(Pair(QUrl::fromLocalFile(fallbackPath()), false)));
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingAttemptsTest, PiecesKeepTheirNumbersThoughSomeWereMovedBefore)
{
    startAsGIF();
    recordAndPause();
    manager->togglePause();
    crash();
    write(journalPath(), contents(journalPath()).replace("Attempts\": 0", "Attempts\": 3"));
    ASSERT_TRUE(QFile::rename(run(0).file(), part(1, 2)));
    recover();
    ASSERT_TRUE(runUntil([this] { return !recovered.empty(); }));
    EXPECT_THAT(recovered, ElementsAre(Pair(QUrl::fromLocalFile(part(1, 2)), false)));
    EXPECT_EQ(contents(part(2, 2)), "film");
    EXPECT_EQ(exports.size(), 0u);
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingAttemptsTest, AFilmThatCannotBePutInItsPlaceIsNotGivenUp)
{
    start();
    crash();
    recover();
    const QString captures = folder.filePath(QStringLiteral("captures"));
    QDir(captures).removeRecursively();
    write(captures, "in the way");
    complete(MovieExport::End::impossible);
    ASSERT_TRUE(runUntil([this] { return lostAttempts() == 0; }));
}

TEST_F(RecordingAttemptsTest, WhatADiskKeepsFromBeingJoinedIsTriedAgainAndThenGivenAsItIs)
{
    start();
    recordAndPause();
    manager->togglePause();
    manager->stop(false);
    end();
    for (int attempt = 0; attempt <= 3; ++attempt) {
        ASSERT_EQ(exports.size(), static_cast<std::size_t>(attempt) + 1);
        complete(MovieExport::End::unreadable);
        exports.back().completion = {};
        EXPECT_EQ(lostAttempts(), attempt);
        EXPECT_EQ(segmentFiles().size(), 2);
        makeManager();
        recover();
    }
    EXPECT_THAT(results, ElementsAre(QUrl()));
    EXPECT_EQ(exports.size(), 4u);
    ASSERT_TRUE(runUntil([this] { return !recovered.empty(); }));
    EXPECT_THAT(recovered, ElementsAre(Pair(QUrl::fromLocalFile(part(1, 2)), false)));
    EXPECT_EQ(contents(part(1, 2)), "film");
    EXPECT_EQ(contents(part(2, 2)), "film");
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingAttemptsTest, OneThatCannotBeMovedForItsDiskEitherIsOnlyMovedAfterThreeTries)
{
    start();
    crash();
    const QString captures = folder.filePath(QStringLiteral("captures"));
    for (int attempt = 1; attempt <= 3; ++attempt) {
        recover();
        ASSERT_EQ(exports.size(), static_cast<std::size_t>(attempt));
        QDir(captures).removeRecursively();
        write(captures, "in the way");
        complete(MovieExport::End::unreadable, "the disk is broken");
        EXPECT_EQ(TestLog::takeLines(),
                  QStringList{QStringLiteral("mp4 remux failed: the disk is broken")});
        exports.back().completion = {};
        awaitEnded();
        EXPECT_EQ(lostAttempts(), attempt);
        makeManager();
    }
    for (int start = 0; start < 2; ++start) {
        recover();
        awaitEnded();
        EXPECT_EQ(exports.size(), 3u);
        EXPECT_EQ(segmentFiles().size(), 1);
        EXPECT_EQ(lostAttempts(), 3);
        makeManager();
    }
    QFile::remove(captures);
    recover();
    ASSERT_TRUE(runUntil([this] { return !recovered.empty(); }));
    EXPECT_EQ(contents(fallbackPath()), "film");
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingAttemptsTest, WhatHasFailedWaitsForTheNextStartThoughAToolIsWaitedFor)
{
    start();
    recordAndPause();
    manager->togglePause();
    crash();
    start();
    const int tools = dup(runs.back()->command.sharedDescriptor);
    crash();
    recover();
    ASSERT_EQ(exports.size(), 1u);
    complete(MovieExport::End::unreadable);
    exports.back().completion = {};
    for (int second = 0; second < 60; ++second)
        clock.advance(1s);
    EXPECT_EQ(exports.size(), 1u);
    close(tools);
    clock.advance(10s);
    EXPECT_EQ(exports.size(), 2u); // of the other
}

TEST_F(RecordingAttemptsTest, FilmsAreMadeOneByOneAndTheDangerousLast)
{
    start();
    crash();
    const QString dangerous = run(0).file();
    write(journalPath(), contents(journalPath()).replace("Attempts\": 0", "Attempts\": 1"));
    start();
    crash();
    recover();
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_EQ(exports[0].sources, QStringList{run(1).file()});
    complete(MovieExport::End::completed);
    ASSERT_EQ(exports.size(), 2u);
    EXPECT_EQ(exports[1].sources, QStringList{dangerous});
    complete(MovieExport::End::completed);
    EXPECT_EQ(recovered.size(), 2u);
    EXPECT_TRUE(isTidy());
}
