// Segments on a disk that does not give all of them.

#include "Media/MovieExport.h"

#include "support/TemporaryFolder.h"
#include "unit/Media/FilmedSegment.h"
#include "unit/Media/Videos.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// Which byte cannot be read here.
struct BadByte {
    std::atomic<ino_t> file = 0;
    std::atomic<off_t> offset = 0;
};

BadByte& badByte()
{
    static BadByte bad;
    return bad;
}

} // namespace

// In place of the C library's.
extern "C" ssize_t pread(int file, void* bytes, std::size_t count, off_t offset)
{
    const BadByte& bad = badByte();
    struct stat status = {};
    if (bad.file != 0 && bad.offset >= offset && bad.offset < offset + static_cast<off_t>(count) &&
        fstat(file, &status) == 0 && status.st_ino == bad.file)
    {
        errno = EIO;
        return -1;
    }
    return syscall(SYS_pread64, file, bytes, count, offset);
}

namespace {

using testing::ElementsAre;
using testing::StartsWith;

class Unreadable : public testing::Test {
protected:
    Unreadable()
    {
        FilmedSegment segment = FilmedSegment::steady(6, 30, 100);
        segment.hasSound = true;
        for (int sample = 0; sample < 270'000; sample += 37)
            segment.clicks.push_back(sample);
        const std::string bytes = segment.bytes();
        m_size = static_cast<off_t>(bytes.size());
        for (const char* const name : {"a.mov", "b.mov"})
            writeFile(m_folder / name, bytes);
    }
    ~Unreadable() override { badByte().file = 0; }

    void setBad(const char* name, off_t offset)
    {
        struct stat status = {};
        ASSERT_EQ(stat((m_folder / name).c_str(), &status), 0);
        badByte().offset = offset;
        badByte().file = status.st_ino;
    }

    QString path(const char* name) const { return QString::fromStdString(m_folder / name); }

    void expectUnreadable(const MovieExport::Outcome& outcome, MovieExport::End end,
                          const char* segment)
    {
        EXPECT_EQ(outcome.end, end);
        EXPECT_EQ(outcome.reason, "cannot read " + (m_folder / segment) + ": Input/output error");
        EXPECT_THAT(m_folder.names(), ElementsAre("a.mov", "b.mov"));
    }

    TemporaryFolder m_folder;
    off_t m_size = 0;
};

} // namespace

TEST_F(Unreadable, IsNotTheEndOfWhatIsTrimmed)
{
    // A film, which has its index in front.
    ASSERT_TRUE(MovieExport::remux(path("b.mov"), path("c.mp4")).succeeded());
    std::filesystem::rename(m_folder / "c.mp4", m_folder / "b.mov");
    const auto size = static_cast<off_t>(std::filesystem::file_size(m_folder / "b.mov"));
    setBad("b.mov", size * 2 / 3);
    for (const double start : {1.0, 5.5}) { // it lies in the range, or before
        const MovieExport::Outcome outcome =
            MovieExport::trim(path("b.mov"), start, 6, path("film.mp4"));
        EXPECT_FALSE(outcome.succeeded());
        EXPECT_EQ(outcome.reason, "cannot read " + (m_folder / "b.mov") + ": Input/output error");
        EXPECT_THAT(m_folder.names(), ElementsAre("a.mov", "b.mov"));
    }
    EXPECT_TRUE(MovieExport::trim(path("b.mov"), 1, 2, path("film.mp4")).succeeded());
}

TEST_F(Unreadable, IsNotTheEndOfASegmentThatIsJoined)
{
    // In tables that are looked through at first, in pictures and in sound.
    for (const off_t offset : {off_t{0}, m_size / 3, m_size / 2, m_size * 2 / 3, m_size - 1}) {
        SCOPED_TRACE(offset);
        setBad("b.mov", offset);
        expectUnreadable(MovieExport::concatenate({path("a.mov"), path("b.mov")}, path("film.mp4")),
                         MovieExport::End::unreadable, "b.mov");
    }
    badByte().file = 0;
    EXPECT_TRUE(
        MovieExport::concatenate({path("a.mov"), path("b.mov")}, path("film.mp4")).succeeded());
}

TEST_F(Unreadable, IsNotTheEndOfASegmentThatIsCopied)
{
    setBad("a.mov", m_size / 2);
    expectUnreadable(MovieExport::remux(path("a.mov"), path("film.mp4")),
                     MovieExport::End::unreadable, "a.mov");
}

TEST_F(Unreadable, IsNotTheEndOfSoundThatBecomesAac)
{
    Videos::make({"-f", "lavfi", "-i", "color=gray:s=32x32:d=0.1", "-f", "lavfi", "-i", "sine=d=3",
                  "-c:a", "pcm_s16le", m_folder / "a.mov"});
    // Who reads the pictures does not get as far as that.
    const auto size = static_cast<off_t>(std::filesystem::file_size(m_folder / "a.mov"));
    setBad("a.mov", size / 2);
    expectUnreadable(MovieExport::remux(path("a.mov"), path("film.mp4")),
                     MovieExport::End::unreadable, "a.mov");
}
