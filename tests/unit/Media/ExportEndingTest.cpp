#include "Media/MovieExport.h"

#include "Support/Guarded.h"
#include "support/ChildProcess.h"
#include "support/EventLoop.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/FilmedSegment.h"
#include "unit/Media/PlayedMovie.h"
#include "unit/Media/Videos.h"

#include <QCoreApplication>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <optional>
#include <thread>

#include <signal.h>
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
        for (int sample = 0; sample < 90'000; sample += 37)
            segment.clicks.push_back(sample); // some ten kilobytes a second
        writeFile(m_folder / "segment", segment.bytes());
    }

    /// So much work that nobody waits for its end.
    QStringList endless() const { return QStringList(1000, m_segment); }

    TemporaryFolder m_folder;
    QString m_segment = QString::fromStdString(m_folder / "segment");
    QString m_target = QString::fromStdString(m_folder / "out/film.mp4");
};

/// Waits until the process has a file below `folder` open, with or without a name. Linux.
[[nodiscard]] bool awaitOpenBelow(const std::string& folder, pid_t process)
{
    const auto deadline = std::chrono::steady_clock::now() + 30s;
    const std::string descriptors = "/proc/" + std::to_string(process) + "/fd";
    while (std::chrono::steady_clock::now() < deadline) {
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(descriptors, error)) {
            const fs::path target = fs::read_symlink(entry.path(), error);
            if (target.string().starts_with(folder + "/"))
                return true;
        }
        std::this_thread::sleep_for(1ms);
    }
    return false;
}

} // namespace

TEST_F(ExportEnding, KilledLeavesNothing)
{
    fs::create_directory(m_folder / "out");
    Command command{{TAMRIK_EXPORT_PROGRAM, m_target.toStdString()}, {}};
    for (const QString& segment : endless())
        command.words.push_back(segment.toStdString());
    ChildProcess program(command);
    ASSERT_TRUE(awaitOpenBelow(m_folder / "out", program.id()));
    program.send(SIGKILL);
    EXPECT_EQ(program.wait().signal, SIGKILL);
    EXPECT_TRUE(fs::is_empty(m_folder / "out"));
}

TEST_F(ExportEnding, KilledWhileItTrimsLeavesNothing)
{
    fs::create_directory(m_folder / "out");
    // The system kills it when it writes more than so many halves of a KiB.
    for (const char* halves : {"1", "24"}) {
        SCOPED_TRACE(halves);
        const Outcome outcome = run(
            {{"sh", "-c", "ulimit -c 0; ulimit -f $0; exec \"$@\"", halves, TAMRIK_EXPORT_PROGRAM,
              "--trim", "0.3", "1.9", m_target.toStdString(), m_segment.toStdString()},
             {}});
        EXPECT_EQ(outcome.signal, SIGXFSZ) << outcome.status << outcome.output << outcome.error;
        EXPECT_TRUE(fs::is_empty(m_folder / "out"));
    }
}

TEST_F(ExportEnding, OfTwoTrimsToOneFileTheOneThatWasAskedForLastStays)
{
    fs::create_directory(m_folder / "out");
    // Of which much sound has to be encoded first.
    const std::string film = m_folder / "film.mov";
    Videos::make({"-f", "lavfi", "-i", "color=s=64x48:r=10:d=8", "-f", "lavfi", "-i",
                  "sine=r=48000:d=8", "-c:a", "pcm_s16le", "-bf", "0", film});
    std::atomic<int> made = 0;
    for (const double end : {8.0, 0.3})
        MovieExport::trimInBackground(
            QString::fromStdString(film), 0, end, m_target,
            [&](const MovieExport::Outcome& outcome) { made += outcome.succeeded() ? 1 : 100; });
    ASSERT_TRUE(runUntil([&] { return made >= 2; }));
    EXPECT_EQ(made, 2);
    EXPECT_EQ(PlayedMovie::of(m_target.toStdString()).frames.size(), 3U);
}

TEST_F(ExportEnding, CancelledLeavesNothingAndSaysSo)
{
    fs::create_directory(m_folder / "out");
    writeFile(m_target.toStdString(), "old");
    const Cancellation cancellation;
    std::optional<MovieExport::Outcome> outcome;
    MovieExport::concatenateInBackground(
        endless(), m_target,
        Guarded::once<const MovieExport::Outcome&>(
            QCoreApplication::instance(),
            [&](const MovieExport::Outcome& ended) { outcome = ended; }),
        cancellation);
    const bool isWriting = awaitOpenBelow(m_folder / "out", getpid());
    cancellation.cancel();
    ASSERT_TRUE(runUntil([&] { return outcome.has_value(); }));
    EXPECT_TRUE(isWriting);
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
        isElsewhere = QThread::currentThread() != QCoreApplication::instance()->thread() &&
                      outcome.succeeded();
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

/// What exports onto a disk of so many KiB of its own say, and what is there after each.
std::string exportOntoSmallDisk(const QString& segment, const QString& target, int kib)
{
    const fs::path disk = fs::path(target.toStdString()).parent_path();
    fs::create_directory(disk);
    const std::string script = "mount -t tmpfs -o size=" + std::to_string(kib) +
                               "k tmpfs \"$1\" || exit 90\n"
                               "for segments in \"$4\" \"$4 $4\"; do\n"
                               "  \"$2\" \"$3\" $segments\n"
                               "  ls -A \"$1\"\n"
                               "done\n"
                               "\"$2\" --trim 0.1 2 \"$3\" \"$4\"\n"
                               "ls -A \"$1\"\n";
    Command command;
    command.words = {"unshare", "--mount"};
    if (geteuid() != 0)
        command.words.push_back("--map-root-user");
    for (const std::string& word :
         {std::string("sh"), std::string("-c"), script, std::string("sh"), disk.string(),
          std::string(TAMRIK_EXPORT_PROGRAM), target.toStdString(), segment.toStdString()})
        command.words.push_back(word);
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    return outcome.output;
}

TEST_F(ExportEnding, AFullDiskIsAFailureThatLeavesNothing)
{
    const std::string line =
        "cannot write " + m_target.toStdString() + ": No space left on device\n";
    EXPECT_EQ(exportOntoSmallDisk(m_segment, m_target, 24), line + line + line);
}

TEST_F(ExportEnding, ALargeEnoughDiskIsNone)
{
    EXPECT_EQ(exportOntoSmallDisk(m_segment, m_target, 4000),
              "\nfilm.mp4\n\nfilm.mp4\n\nfilm.mp4\n");
}
