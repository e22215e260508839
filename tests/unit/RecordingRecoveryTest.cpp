// What is left of a recording when the program goes, and what the next start makes of it.

#include "unit/RecordingRecoveryFixture.h"

#include <array>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Pair;

namespace {

/// How files get to the disk here.
struct Disk {
    static Disk& get()
    {
        static Disk disk;
        return disk;
    }

    void setStuck(bool stuck)
    {
        const std::lock_guard lock(mutex);
        isStuck = stuck;
        changed.notify_all();
    }

    /// How many files and how many folders got there since the last call.
    std::pair<int, int> takeCounts()
    {
        const std::lock_guard lock(mutex);
        return {std::exchange(files, 0), std::exchange(names, 0)};
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool isStuck = false;
    int error = 0; // of files; 0 when they get there
    int files = 0;
    int names = 0;
};

int bring(int& count)
{
    Disk& disk = Disk::get();
    std::unique_lock lock(disk.mutex);
    disk.changed.wait(lock, [&] { return !disk.isStuck; });
    ++count;
    return 0;
}

} // namespace

// In place of the C library's.
extern "C" int fdatasync(int)
{
    bring(Disk::get().files);
    errno = Disk::get().error;
    return errno == 0 ? 0 : -1;
}

extern "C" int fsync(int)
{
    return bring(Disk::get().names);
}

namespace {

class RecordingRecoveryTest : public RecordingRecoveryFixture {};

} // namespace

TEST_F(RecordingRecoveryTest, TheJournalNamesEachSegmentBeforeItStarts)
{
    QStringList atLaunch;
    start();
    EXPECT_EQ(journal().value(QStringLiteral("film")), finalPath());
    EXPECT_EQ(journal().value(QStringLiteral("segments")).toArray(),
              QJsonArray{QFileInfo(run(0).file()).fileName()});
    EXPECT_EQ(QFileInfo(journalPath()).permissions() &
                  ~(QFile::ReadUser | QFile::WriteUser | QFile::ReadOwner | QFile::WriteOwner),
              QFile::Permissions());
    recordAndPause();
    manager->togglePause();
    EXPECT_EQ(
        journal().value(QStringLiteral("segments")).toArray(),
        (QJsonArray{QFileInfo(run(0).file()).fileName(), QFileInfo(run(1).file()).fileName()}));
    EXPECT_EQ(named("*").size(), 2); // the journal and the first segment
}

TEST_F(RecordingRecoveryTest, TheJournalIsThereWhenTheToolStartsAndTheToolHoldsIt)
{
    start();
    EXPECT_GE(run(0).command.sharedDescriptor, 0);
    EXPECT_EQ(journals().size(), 1);
}

TEST_F(RecordingRecoveryTest, TheJournalIsBroughtToTheDiskAndASlowOneKeepsNobodyWaiting)
{
    Disk& disk = Disk::get();
    Background::threads().waitForDone();
    disk.takeCounts();
    start();
    Background::threads().waitForDone();
    EXPECT_EQ(disk.takeCounts(), std::pair(1, 1));

    recordAndPause();
    disk.setStuck(true);
    manager->togglePause();
    EXPECT_EQ(runs.size(), 2u); // it films all the same
    EXPECT_EQ(journal().value(QStringLiteral("segments")).toArray().size(), 2);
    disk.setStuck(false);
    Background::threads().waitForDone();
    EXPECT_EQ(disk.takeCounts(), std::pair(1, 1));
}

TEST_F(RecordingRecoveryTest, AFileSystemThatBringsNothingToItsDiskHasJournalsToo)
{
    for (const int error : {EINVAL, EIO}) {
        Disk::get().error = error;
        start();
        EXPECT_EQ(journals().size(), error == EINVAL ? 1 : 0);
        Disk::get().error = 0;
        manager->stop(true);
        end(false);
    }
}

TEST_F(RecordingRecoveryTest, TheJournalStaysUntilTheFilmIsThere)
{
    start();
    manager->stop(false);
    end();
    EXPECT_EQ(journals().size(), 1);
    complete(MovieExport::End::completed);
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingRecoveryTest, ASegmentLeftAloneBecomesTheFilm)
{
    start();
    crash();
    recover();
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_TRUE(exports[0].copies);
    EXPECT_EQ(exports[0].sources, QStringList{run(0).file()});
    EXPECT_EQ(exports[0].destination, finalPath());
    complete(MovieExport::End::completed);
    EXPECT_THAT(recovered, ElementsAre(Pair(QUrl::fromLocalFile(finalPath()), false)));
    EXPECT_TRUE(isTidy());
    EXPECT_EQ(manager->state(), RecordingState::idle);

    recover();
    EXPECT_EQ(exports.size(), 1u);
}

TEST_F(RecordingRecoveryTest, SegmentsLeftAloneAreJoinedInOrder)
{
    startAsGIF();
    recordAndPause();
    manager->togglePause();
    recordAndPause();
    manager->togglePause();
    QDir(folder.filePath(QStringLiteral("captures"))).removeRecursively();
    crash();
    recover();
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_EQ(exports[0].sources, (QStringList{run(0).file(), run(1).file(), run(2).file()}));
    complete(MovieExport::End::completed);
    EXPECT_THAT(recovered, ElementsAre(Pair(QUrl::fromLocalFile(finalPath()), true)));
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingRecoveryTest, ASegmentThatNeverCameIsLeftOut)
{
    start();
    recordAndPause();
    manager->togglePause();
    crash(false);
    recover();
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_EQ(exports[0].sources, QStringList{run(0).file()});
}

TEST_F(RecordingRecoveryTest, ASessionWithoutAnyFilmLeavesNothing)
{
    start();
    crash(false);
    recover();
    EXPECT_TRUE(exports.empty());
    EXPECT_TRUE(recovered.empty());
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingRecoveryTest, AnExportThatTheProgramDidNotSeeTheEndOfIsMadeAgain)
{
    start();
    manager->stop(false);
    end();
    crash(false);
    EXPECT_TRUE(exports[0].cancellation.isCancelled());
    exports[0].completion({MovieExport::End::failed, "cancelled"});
    exports[0].completion = {}; // with the process its hold on the journal ends
    EXPECT_TRUE(results.isEmpty());
    recover();
    ASSERT_EQ(exports.size(), 2u);
    EXPECT_FALSE(exports[1].cancellation.isCancelled());
    EXPECT_EQ(exports[1].sources, QStringList{run(0).file()});
}

TEST_F(RecordingRecoveryTest, WhatWasThrownAwayDoesNotComeBack)
{
    start();
    recordAndPause();
    manager->togglePause();
    manager->restart();
    crash();
    recover();
    EXPECT_TRUE(exports.empty());
    EXPECT_TRUE(isTidy());

    start();
    manager->restart();
    end();
    crash();
    recover();
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_EQ(exports[0].sources, QStringList{runs.back()->file()});
}

TEST_F(RecordingRecoveryTest, AProgramThatGoesInTheMiddleOfADiscardLeavesNothing)
{
    start();
    recordAndPause();
    manager->togglePause();
    EXPECT_FALSE(journal().value(QStringLiteral("discarded")).toBool(true));
    manager->stop(true);
    EXPECT_TRUE(journal().value(QStringLiteral("discarded")).toBool()); // should it be killed
    write(run(1).file(), "film");
    manager.reset();
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingRecoveryTest, ADiscardThatComesAfterAStopIsNotedToo)
{
    start();
    manager->stop(false);
    EXPECT_FALSE(journal().value(QStringLiteral("discarded")).toBool(true));
    manager->stop(true);
    EXPECT_TRUE(journal().value(QStringLiteral("discarded")).toBool(false));
}

TEST_F(RecordingRecoveryTest, ARunningRecordingIsLeftAlone)
{
    start();
    write(run(0).file(), "film");
    recover();
    EXPECT_TRUE(exports.empty());
    manager->stop(false);
    end();
    EXPECT_EQ(exports.size(), 1u);
}

TEST_F(RecordingRecoveryTest, AToolThatOutlivesItsProgramIsWaitedFor)
{
    start();
    // As in a process that has got the descriptor.
    const int tools = dup(run(0).command.sharedDescriptor);
    crash();
    recover();
    clock.advance(3s);
    EXPECT_TRUE(exports.empty());
    close(tools);
    clock.advance(1s);
    EXPECT_EQ(exports.size(), 1u);
}

TEST_F(RecordingRecoveryTest, AToolThatNeedsMinutesForItsFileIsWaitedForToo)
{
    start();
    const int tools = dup(run(0).command.sharedDescriptor);
    crash();
    recover();
    for (int second = 0; second < 300; ++second)
        clock.advance(1s);
    EXPECT_TRUE(exports.empty());
    close(tools);
    clock.advance(10s);
    EXPECT_EQ(exports.size(), 1u);
}

TEST_F(RecordingRecoveryTest, AToolMayFinishItsFileAfterTheProgramsEnd)
{
    start();
    EXPECT_TRUE(run(0).command.isLeftRunning);
    run(0).endsInTime = false;
    manager.reset();
    EXPECT_EQ(run(0).interrupts, 1);
    EXPECT_EQ(journals().size(), 1);
}

TEST_F(RecordingRecoveryTest, ASegmentThatComesAfterItsDiscardDoesNotStay)
{
    start();
    run(0).endsInTime = false;
    manager->stop(true);
    makeManager();
    EXPECT_TRUE(segmentFiles().isEmpty());
    write(run(0).file(), "film");
    recover();
    EXPECT_TRUE(exports.empty());
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingRecoveryTest, AToolThatStillFilmsWhatIsThrownAwayIsWaitedForToo)
{
    for (const bool restarts : {false, true}) {
        start();
        const int tools = dup(run(runs.size() - 1).command.sharedDescriptor);
        runs.back()->endsInTime = false;
        if (restarts)
            manager->restart();
        else
            manager->stop(true);
        EXPECT_TRUE(journal().value(QStringLiteral("discarded")).toBool());
        const QString late = runs.back()->file();
        makeManager();
        recover();
        EXPECT_EQ(journals().size(), 1);
        write(late, "film");
        close(tools);
        clock.advance(1s);
        EXPECT_TRUE(exports.empty());
        EXPECT_TRUE(isTidy());
    }
}

TEST_F(RecordingRecoveryTest, AnotherProcessThatHoldsAJournalKeepsIt)
{
    start();
    crash();
    std::array<int, 2> go{};
    ASSERT_EQ(pipe(go.data()), 0);
    std::array<int, 2> ready{};
    ASSERT_EQ(pipe(ready.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
        const auto held = RecordingJournal::claimAbandoned(segmentFolder());
        char byte = held.found.size() == 1 ? 'y' : 'n';
        (void)!::write(ready[1], &byte, 1);
        (void)!read(go[0], &byte, 1);
        _exit(0);
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'y');
    recover();
    EXPECT_TRUE(exports.empty());
    ASSERT_EQ(::write(go[1], &byte, 1), 1);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    recover();
    EXPECT_EQ(exports.size(), 1u);
    for (const int descriptor : {go[0], go[1], ready[0], ready[1]})
        close(descriptor);
}

TEST_F(RecordingRecoveryTest, BrokenJournalsArePutAside)
{
    start();
    crash();
    const QString path = journalPath();
    const QByteArray good = contents(path);
    const QList<QByteArray> broken = {
        "",
        "{",
        "[]",
        good.left(good.size() / 2),
        QByteArray(good).replace("\"version\": 1", "\"version\": 0"),
        QByteArray(good).replace("\"gif\": false", "\"gif\": 1"),
        QByteArray(good).replace("\"film\": \"/", "\"film\": \""),
        QByteArray(good).replace("tamrik-seg-", "../tamrik-seg-"),
        QByteArray(good).replace("tamrik-seg-", "\\u0000"),
        QByteArray(2 << 20, ' '),
        QByteArray(1 << 19, '['),
    };
    for (const QByteArray& bytes : broken) {
        ASSERT_NE(bytes, good);
        write(path, bytes);
        recover();
        EXPECT_TRUE(exports.empty()) << bytes.left(300).constData();
        EXPECT_TRUE(journals().isEmpty());
        EXPECT_EQ(named("*.broken").size(), 1);
        EXPECT_EQ(contents(path + QStringLiteral(".broken")), bytes);
        EXPECT_EQ(segmentFiles().size(), 1);
    }
    write(path, good);
    recover();
    EXPECT_EQ(exports.size(), 1u);
}

TEST_F(RecordingRecoveryTest, AJournalOfANewerProgramIsLeftToIt)
{
    start();
    crash();
    const QString path = journalPath();
    const QByteArray newer = "{\"version\": 2, \"films\": []}";
    write(path, newer);
    recover();
    clock.advance(1s);
    EXPECT_TRUE(exports.empty());
    EXPECT_EQ(contents(path), newer);
    EXPECT_EQ(named("*").size(), 2); // with the segment
}

TEST_F(RecordingRecoveryTest, OnlyPlainFilesAreTakenForJournals)
{
    start();
    crash();
    const QString path = journalPath();
    const QString real = folder.filePath(QStringLiteral("elsewhere"));
    ASSERT_TRUE(QFile::rename(path, real));
    ASSERT_TRUE(QFile::link(real, path));
    recover();
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(QDir().mkdir(path));
    recover();
    EXPECT_TRUE(QDir().rmdir(path));
    EXPECT_TRUE(exports.empty());
}

TEST_F(RecordingRecoveryTest, AJournalThatWasBeingWrittenGoes)
{
    const QString unfinished = segmentFolder() + QStringLiteral("/tamrik-rec-1.json.new");
    write(unfinished, "{\"vers");
    recover();
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingRecoveryTest, WithoutAPlaceForAJournalItRecordsAllTheSame)
{
    QDir(segmentFolder()).removeRecursively();
    start();
    EXPECT_EQ(manager->state(), RecordingState::recording);
    EXPECT_EQ(run(0).command.sharedDescriptor, -1);
    manager->stop(false);
    end(false);
    EXPECT_EQ(results.size(), 1);
}
