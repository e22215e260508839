#include "Media/MovieExport.h"

#include "Support/Guarded.h"
#include "support/EventLoop.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/FilmedSegment.h"
#include "unit/Media/PlayedMovie.h"

#include <QObject>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <sched.h>
#include <sstream>
#include <thread>

#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

class ExportEnding : public testing::Test {
protected:
    ExportEnding()
    {
        FilmedSegment segment = FilmedSegment::steady(2, 30, 100);
        segment.hasSound = true;
        writeFile(m_folder / "segment", segment.bytes());
    }

    /// So much work that nobody waits for its end.
    QStringList endless() const { return QStringList(5000, m_segment); }

    TemporaryFolder m_folder;
    QString m_segment = QString::fromStdString(m_folder / "segment");
    QString m_target = QString::fromStdString(m_folder / "out/film.mp4");
};

/// Runs `work` in a process of its own.
class Fork {
public:
    template <class Work>
    explicit Fork(Work work)
        : m_id(fork())
    {
        if (m_id == 0) {
            work();
            _exit(0);
        }
    }
    ~Fork() { end(SIGKILL); }

    void end(int signal)
    {
        if (m_id <= 0)
            return;
        kill(m_id, signal);
        wait();
    }
    int wait()
    {
        int status = -1;
        EXPECT_EQ(waitpid(m_id, &status, 0), m_id);
        m_id = -1;
        return status;
    }

    /// Whether it has a file below `folder` open, with or without a name. Linux.
    bool hasOpenBelow(const std::string& folder) const
    {
        std::error_code error;
        const std::string descriptors = "/proc/" + std::to_string(m_id) + "/fd";
        for (const auto& entry : fs::directory_iterator(descriptors, error)) {
            const fs::path target = fs::read_symlink(entry.path(), error);
            if (target.string().starts_with(folder + "/"))
                return true;
        }
        return false;
    }

private:
    pid_t m_id;
};

} // namespace

TEST_F(ExportEnding, KilledLeavesNothing)
{
    fs::create_directory(m_folder / "out");
    Fork fork([&] { MovieExport::concatenate(endless(), m_target); });
    const auto deadline = std::chrono::steady_clock::now() + 30s;
    while (!fork.hasOpenBelow(m_folder / "out")) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        std::this_thread::sleep_for(1ms);
    }
    fork.end(SIGKILL);
    EXPECT_TRUE(fs::is_empty(m_folder / "out"));
}

TEST_F(ExportEnding, CancelledLeavesNothingAndSaysSo)
{
    fs::create_directory(m_folder / "out");
    const Cancellation cancellation;
    std::optional<MovieExport::Outcome> outcome;
    MovieExport::concatenateInBackground(
        endless(), m_target,
        Guarded::once<const MovieExport::Outcome&>(
            qApp, [&](const MovieExport::Outcome& ended) { outcome = ended; }),
        cancellation);
    // In the middle of it, wherever that is.
    std::this_thread::sleep_for(20ms);
    cancellation.cancel();
    ASSERT_TRUE(runUntil([&] { return outcome.has_value(); }));
    EXPECT_EQ(outcome->end, MovieExport::End::failed);
    EXPECT_THAT(outcome->reason, HasSubstr("cancelled"));
    EXPECT_TRUE(fs::is_empty(m_folder / "out"));
    EXPECT_THAT(MovieExport::remux(m_segment, m_target, cancellation).reason,
                HasSubstr("cancelled"));
    EXPECT_TRUE(fs::is_empty(m_folder / "out"));
}

TEST_F(ExportEnding, InTheBackgroundReportsOnceFromAnotherThread)
{
    fs::create_directory(m_folder / "out");
    std::atomic<int> calls = 0;
    std::atomic<bool> isElsewhere = false;
    const auto completion = [&](const MovieExport::Outcome& outcome) {
        isElsewhere = QThread::currentThread() != qApp->thread() && outcome.succeeded();
        ++calls;
    };
    MovieExport::remuxInBackground(m_segment, m_target, completion);
    ASSERT_TRUE(runUntil([&] { return calls > 0; }));
    EXPECT_TRUE(isElsewhere);
    EXPECT_EQ(PlayedMovie::of(m_target.toStdString()).frames.size(), 60U);
    MovieExport::concatenateInBackground({m_segment, m_segment}, m_target, completion);
    ASSERT_TRUE(runUntil([&] { return calls > 1; }));
    EXPECT_TRUE(isElsewhere);
    EXPECT_EQ(PlayedMovie::of(m_target.toStdString()).frames.size(), 120U);
}

/// What exports onto a disk of so many KiB say, and what is there afterwards.
std::string exportOntoSmallDisk(const QStringList& segments, const QString& target, int kib)
{
    const std::string disk = fs::path(target.toStdString()).parent_path();
    fs::create_directory(disk);
    int ends[2] = {};
    EXPECT_EQ(pipe(ends), 0);
    Fork fork([&] {
        std::ostringstream said;
        // Only the superuser mounts, in a name space of its own everybody is that.
        const int spaces = CLONE_NEWNS | (geteuid() == 0 ? 0 : CLONE_NEWUSER);
        const std::string options = "size=" + std::to_string(kib) + "k";
        if (unshare(spaces) != 0 ||
            mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", disk.c_str(), "tmpfs", 0, options.c_str()) != 0)
        {
            said << "no disk: " << strerror(errno);
        } else {
            said << MovieExport::remux(segments.front(), target).reason << "\n"
                 << MovieExport::concatenate(segments, target).reason << "\n"
                 << std::distance(fs::directory_iterator(disk), {}) << " files\n";
        }
        const std::string text = said.str();
        _exit(write(ends[1], text.data(), text.size()) < 0);
    });
    close(ends[1]);
    std::string said(1000, '\0');
    said.resize(static_cast<std::size_t>(std::max<ssize_t>(read(ends[0], said.data(), 1000), 0)));
    close(ends[0]);
    fork.wait();
    return said;
}

TEST_F(ExportEnding, AFullDiskIsAFailureThatLeavesNothing)
{
    const std::string line =
        "cannot write " + m_target.toStdString() + ": No space left on device\n";
    EXPECT_EQ(exportOntoSmallDisk({m_segment, m_segment}, m_target, 4), line + line + "0 files\n");
}

TEST_F(ExportEnding, ALargeEnoughDiskIsNone)
{
    EXPECT_EQ(exportOntoSmallDisk({m_segment, m_segment}, m_target, 4000), "\n\n1 files\n");
}
