#include "Editor/SidecarWriter.h"

#include "Editor/Sidecar.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <random>
#include <semaphore>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A list that is told apart from others by `number`, with a stroke of so many points.
QList<Annotation> listOf(int number, qsizetype points = 0)
{
    return {{.kind = AnnotationKind::freehand,
             .start = {static_cast<double>(number), 0},
             .path = QList<Geometry::Point>(points, {number + 0.25, -number / 3.0}),
             .colorHex = QStringLiteral("#FF3B30"),
             .lineWidth = 4}};
}

int numberOf(const QList<Annotation>& list)
{
    return list.isEmpty() ? -1 : static_cast<int>(list.first().start.x);
}

/// Stands in for the disk: keeps what it is told, and every save waits until it may end.
struct SlowDisk {
    std::counting_semaphore<> begun{0};
    std::counting_semaphore<> mayEnd{0};
    std::vector<int> saved; // of the writing threads until they have ended
    std::vector<std::thread::id> threads;

    SidecarWriter::Save save()
    {
        return [this](const QList<Annotation>& list, const QString&) {
            begun.release();
            mayEnd.acquire();
            saved.push_back(numberOf(list));
            threads.push_back(std::this_thread::get_id());
        };
    }
};

class SidecarWriting : public testing::Test {
protected:
    QString image(const char* name = "a.png") const
    {
        return QString::fromStdString(m_folder / name);
    }

    TemporaryFolder m_folder;
};

} // namespace

TEST(SidecarWriter, KeepsNobodyWaitingAndWritesTheNewestAlone)
{
    SlowDisk disk;
    SidecarWriter writer(QStringLiteral("a.png"), disk.save());
    writer.save(listOf(1));
    disk.begun.acquire();
    for (int i = 2; i <= 5; ++i)
        writer.save(listOf(i)); // would never return if it waited
    disk.mayEnd.release(2);
    writer.finish();
    EXPECT_EQ(disk.saved, (std::vector{1, 5}));
    for (const std::thread::id thread : disk.threads)
        EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(SidecarWriter, FinishesBeforeItGoes)
{
    SlowDisk disk;
    disk.mayEnd.release(3);
    {
        SidecarWriter writer(QStringLiteral("a.png"), disk.save());
        writer.finish(); // nothing to do
        writer.save(listOf(1));
        writer.finish();
        EXPECT_EQ(disk.saved, (std::vector{1}));
        writer.finish();
        writer.save(listOf(2));
    }
    EXPECT_EQ(disk.saved, (std::vector{1, 2}));
}

TEST_F(SidecarWriting, ALongListIsInTheFileWhenItHasFinished)
{
    SidecarWriter writer(image());
    QList<Annotation> list = listOf(1, 100'000);
    writer.save(list);
    const QList<Annotation> saved = list;
    list.first().translate(3, 4); // nobody else's business
    writer.finish();
    EXPECT_TRUE(Sidecar::load(image()) == saved);
    writer.save({});
    writer.finish();
    EXPECT_TRUE(m_folder.names().empty());
}

TEST_F(SidecarWriting, WhoeverReadsMeanwhileFindsAWholeList)
{
    constexpr int lists = 60;
    constexpr qsizetype points = 2'000;
    SidecarWriter writer(image());
    writer.save(listOf(0, points));
    writer.finish();
    int newest = 0;
    for (int i = 1; i <= lists; ++i) {
        writer.save(listOf(i, points));
        const QList<Annotation> found = Sidecar::load(image());
        ASSERT_EQ(found.size(), 1) << "after list " << i;
        EXPECT_GE(numberOf(found), newest);
        EXPECT_EQ(found.first().path->size(), points);
        newest = numberOf(found);
    }
    writer.finish();
    EXPECT_EQ(numberOf(Sidecar::load(image())), lists);
    EXPECT_EQ(m_folder.names().size(), 1U) << "something was left behind";
}

TEST_F(SidecarWriting, AProgramThatIsKilledLeavesTheOldFile)
{
    SidecarWriter writer(image());
    writer.save(listOf(1));
    writer.finish();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // The kernel kills who writes more than that, so in the midst of it.
        const rlimit limit{65536, 65536};
        const rlimit noCore{0, 0};
        std::signal(SIGXFSZ, SIG_DFL);
        if (setrlimit(RLIMIT_FSIZE, &limit) == 0 && setrlimit(RLIMIT_CORE, &noCore) == 0) {
            SidecarWriter killed(image());
            killed.save(listOf(2, 100'000));
            killed.finish();
        }
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "status " << status;
    EXPECT_EQ(WTERMSIG(status), SIGXFSZ);
    EXPECT_EQ(numberOf(Sidecar::load(image())), 1);
    writer.save(listOf(3));
    writer.finish();
    EXPECT_EQ(numberOf(Sidecar::load(image())), 3);
}

TEST_F(SidecarWriting, AKillAtAnyMomentLosesNothingThatWasInTheFile)
{
    constexpr qsizetype points = 3'000;
    constexpr auto isWhole = [](const QList<Annotation>& list) {
        return list.size() == 1 && list.first().path->size() == points;
    };
    std::mt19937 random(11);
    int newest = 0;
    for (int round = 0; round < 30 && !HasFailure(); ++round) {
        const int first = newest + 1;
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) { // changes as they come, until it is killed
            alarm(20);    // or has been forgotten
            SidecarWriter writer(image());
            for (int number = first;; ++number) {
                writer.save(listOf(number, points));
                usleep(500);
            }
        }
        // Some of its changes are seen in the file, and some time after that it dies.
        const int awaited = first + static_cast<int>(random() % 3);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (newest < awaited && !HasFailure()) {
            const QList<Annotation> found = Sidecar::load(image());
            EXPECT_TRUE(isWhole(found) || newest == 0) << "round " << round;
            EXPECT_LT(std::chrono::steady_clock::now(), deadline) << "it writes nothing";
            newest = std::max(newest, numberOf(found));
        }
        usleep(static_cast<useconds_t>(random() % 4'000));
        EXPECT_EQ(kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "status " << status;
        const QList<Annotation> left = Sidecar::load(image());
        EXPECT_TRUE(isWhole(left)) << "round " << round;
        EXPECT_GE(numberOf(left), newest) << "round " << round;
        newest = numberOf(left);
    }
}

TEST_F(SidecarWriting, TwoPicturesDoNotMix)
{
    SidecarWriter first(image("a.png"));
    SidecarWriter second(image("b.png"));
    for (int i = 0; i < 30; ++i) {
        first.save(listOf(i, 500));
        second.save(listOf(1000 + i, 500));
    }
    first.finish();
    second.finish();
    EXPECT_EQ(numberOf(Sidecar::load(image("a.png"))), 29);
    EXPECT_EQ(numberOf(Sidecar::load(image("b.png"))), 1029);
    EXPECT_EQ(m_folder.names(),
              (std::vector<std::string>{"a.png.tamrik.json", "b.png.tamrik.json"}));
}
