// The player itself, on real files.

#include "Media/Player.h"
#include "Media/FilmTimes.h"
#include "Media/FrameReader.h"
#include "Media/MovieExport.h"
#include "Media/PlayerModule.h"
#include "Support/Background.h"
#include "support/EventLoop.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/Videos.h"

#include <QColor>
#include <QDir>
#include <QElapsedTimer>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/log.h>
}

#include <sys/stat.h>

extern "C" const PlayerModule* tamrikPlayerModule();

const PlayerModule* PlayerModule::get()
{
    return tamrikPlayerModule();
}

namespace {

using Phase = PlayerState::Phase;

constexpr int frameCount = 36;

double timeOf(int frame)
{
    return frame / double{Videos::frameRate};
}

/// Films that are made once for all tests.
class PlayerTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        films = new TemporaryFolder;
        writeFile(*films / "grey.raw", Videos::greyFrames(frameCount));
        Videos::encode(*films / "grey.raw", {"-g", "30", "-bf", "0"}, plain());
    }
    static void TearDownTestSuite() { delete films; }

    static std::string plain() { return *films / "plain.mp4"; }

    /// Makes a film of the plain one.
    static std::string changed(const std::string& name, const std::vector<std::string>& options)
    {
        std::vector<std::string> words{"-i", plain()};
        words.insert(words.end(), options.begin(), options.end());
        words.push_back(*films / name);
        Videos::make(words);
        return *films / name;
    }

    void open(const std::string& path)
    {
        player = Player::open(QString::fromStdString(path));
        ASSERT_TRUE(player);
        player->onPicture = [this] { shown.push_back(number()); };
    }
    void openPlayable(const std::string& path)
    {
        open(path);
        ASSERT_TRUE(runUntil([&] { return player->state().phase == Phase::ready; }));
    }

    int number() const
    {
        const QImage image = player->picture({64, 48});
        return image.isNull() ? -1 : Videos::numberOf(qGray(image.pixel(32, 24)));
    }

    /// The number of the frame that shows after a seek.
    int sought(double time)
    {
        player->seek(time);
        EXPECT_TRUE(runUntil([&] { return !player->state().seeking; }));
        return number();
    }

    bool playToEnd()
    {
        player->play();
        return runUntil([&] { return player->state().atEnd && !player->state().playing; });
    }

    static inline TemporaryFolder* films = nullptr;
    std::unique_ptr<Player> player;
    std::vector<int> shown;
};

} // namespace

TEST_F(PlayerTest, BeginsWithTheFirstFrameStandingStill)
{
    openPlayable(plain());
    EXPECT_EQ(number(), 0);
    EXPECT_EQ(player->state().size, QSize(64, 48));
    EXPECT_NEAR(player->state().duration.value_or(0), 1.2, 1e-3);
    EXPECT_EQ(player->state().frameRate.value_or(0), 30);
    EXPECT_EQ(player->state().time, 0);
    EXPECT_FALSE(player->state().playing);
    EXPECT_FALSE(player->state().hasSound);
}

TEST_F(PlayerTest, ASeekShowsTheFrameThatBeginsThenAndKnowsItsTime)
{
    openPlayable(plain());
    for (const int frame : {17, 35, 0, 30, 29, 31}) {
        EXPECT_EQ(sought(timeOf(frame)), frame);
        EXPECT_NEAR(player->state().time, timeOf(frame), 1e-4);
    }
    EXPECT_EQ(sought(100), frameCount - 1);
}

TEST_F(PlayerTest, OfSeeksThatComeTooFastTheLastOneCounts)
{
    openPlayable(plain());
    for (int frame = 0; frame < 34; ++frame)
        player->seek(timeOf(frame));
    EXPECT_EQ(player->state().time, timeOf(33));
    EXPECT_EQ(sought(timeOf(12)), 12);
    // Most of them were never shown.
    EXPECT_LT(shown.size(), 20U);
}

TEST_F(PlayerTest, PlaysInOrderToTheEndAndStandsOnTheLastFrame)
{
    openPlayable(plain());
    shown.clear();
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(playToEnd());
    EXPECT_GT(timer.elapsed(), 1100);
    EXPECT_TRUE(std::is_sorted(shown.begin(), shown.end()));
    EXPECT_EQ(number(), frameCount - 1);
    // And again from where it is put.
    EXPECT_EQ(sought(timeOf(30)), 30);
    EXPECT_FALSE(player->state().atEnd);
    ASSERT_TRUE(playToEnd());
    EXPECT_EQ(number(), frameCount - 1);
}

TEST_F(PlayerTest, PlaysNoFrameAtOrAfterItsEnd)
{
    openPlayable(plain());
    player->setEnd(timeOf(20));
    EXPECT_EQ(sought(timeOf(10)), 10);
    shown.clear();
    ASSERT_TRUE(playToEnd());
    EXPECT_LE(*std::max_element(shown.begin(), shown.end()), 19);
    EXPECT_EQ(number(), 19);
    player->setEnd(std::nullopt);
    EXPECT_EQ(sought(timeOf(30)), 30);
    ASSERT_TRUE(playToEnd());
    EXPECT_EQ(number(), frameCount - 1);
}

TEST_F(PlayerTest, ShowsWhatTheFrameReaderReadsAlsoWithFramesOutOfOrder)
{
    const std::string file = *films / "b.mp4";
    Videos::encode(*films / "grey.raw", {"-g", "30", "-bf", "3"}, file);
    openPlayable(file);
    const auto times = FilmTimes::read(QString::fromStdString(file));
    ASSERT_TRUE(times);
    ASSERT_EQ(times->frames.size(), std::size_t{frameCount});
    for (const std::size_t frame : {std::size_t{1}, std::size_t{22}, std::size_t{34}})
        EXPECT_EQ(sought(times->frames[frame]), static_cast<int>(frame));
}

TEST_F(PlayerTest, FramesAreFoundByTheirTimesWhereverTheseBeginAndHoweverLongTheyLast)
{
    const std::string trimmed = *films / "trimmed.mp4";
    ASSERT_TRUE(MovieExport::trim(QString::fromStdString(plain()), timeOf(10), timeOf(25),
                                  QString::fromStdString(trimmed))
                    .succeeded());
    const std::string late = *films / "late.mp4";
    Videos::make({"-itsoffset", "0.5", "-i", plain(), "-c", "copy", late});
    struct Kind {
        std::string file;
        std::size_t count;
        double begins;
        int first;
        int step;
    };
    const std::vector<Kind> kinds = {
        {trimmed, 15, 0, 10, 1}, // by an edit list, in the middle of what frames refer to
        {late, frameCount, 0.5, 0, 1},
        {changed("rare.mp4", {"-vf", "select=not(mod(n\\,7))", "-fps_mode", "vfr", "-crf", "4"}), 6,
         0, 0, 7},
    };
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.file);
        const auto times = FilmTimes::read(QString::fromStdString(kind.file));
        ASSERT_TRUE(times);
        ASSERT_EQ(times->frames.size(), kind.count);
        EXPECT_NEAR(times->frames[0], kind.begins, 1e-3);
        openPlayable(kind.file);
        EXPECT_EQ(number(), kind.first);
        for (const std::size_t frame : {kind.count - 1, std::size_t{0}, kind.count / 2})
            EXPECT_EQ(sought(times->frames[frame]),
                      kind.first + static_cast<int>(frame) * kind.step);
    }
}

TEST_F(PlayerTest, ATurnedOrMirroredFilmIsAsTheFrameReaderHasIt)
{
    const std::string quarters = *films / "quarters.mp4";
    Videos::make({"-f", "lavfi", "-i", "color=red:s=64x48:r=30:d=0.2", "-vf",
                  "drawbox=0:0:32:24:blue:fill", "-pix_fmt", "yuv420p", quarters});
    struct Matrix {
        int a, b, c, d;
        bool isTurn; // which libmpv sees by itself
    };
    for (const auto& [a, b, c, d, isTurn] :
         {Matrix{0, 1, -1, 0, true}, Matrix{-1, 0, 0, -1, true}, Matrix{-1, 0, 0, 1, false},
          Matrix{1, 0, 0, -1, false}, Matrix{0, 1, 1, 0, false}})
    {
        SCOPED_TRACE(testing::Message() << a << ' ' << b << ' ' << c << ' ' << d);
        const std::string file = *films / "oriented.mp4";
        writeFile(file, Videos::withMatrix(contentOf(quarters), a, b, c, d));
        openPlayable(file);
        if (!isTurn) {
            const auto times = FilmTimes::read(QString::fromStdString(file));
            ASSERT_TRUE(times);
            player->setOrientation(times->orientation);
        }
        auto reader = FrameReader::open(QString::fromStdString(file));
        ASSERT_TRUE(reader);
        const auto theirs = reader->frameAt(0);
        ASSERT_TRUE(theirs);
        ASSERT_EQ(player->state().size, theirs->size());
        const QImage ours = player->picture(theirs->size());
        int blue = 0;
        for (const QPoint corner :
             {QPoint(6, 6), QPoint(theirs->width() - 6, 6), QPoint(6, theirs->height() - 6),
              QPoint(theirs->width() - 6, theirs->height() - 6)})
        {
            EXPECT_EQ(qBlue(ours.pixel(corner)) > 128, qBlue(theirs->pixel(corner)) > 128);
            blue += qBlue(theirs->pixel(corner)) > 128 ? 1 : 0;
        }
        EXPECT_EQ(blue, 1);
    }
}

TEST_F(PlayerTest, ColoursAreTheFilmsOwn)
{
    const std::string file = *films / "colour.mp4";
    Videos::make({"-f", "lavfi", "-i", "color=0x2E8B57:s=64x48:r=30:d=0.2", "-vf",
                  "scale=out_color_matrix=bt709:out_range=tv", "-colorspace", "bt709",
                  "-color_range", "tv", "-pix_fmt", "yuv420p", file});
    openPlayable(file);
    const QColor colour = player->picture({101, 77}).pixelColor(50, 38);
    EXPECT_NEAR(colour.red(), 0x2E, 4);
    EXPECT_NEAR(colour.green(), 0x8B, 4);
    EXPECT_NEAR(colour.blue(), 0x57, 4);
}

TEST_F(PlayerTest, SoundIsKnownAndPlaysWithoutADevice)
{
    openPlayable(changed("sound.mp4", {"-f", "lavfi", "-i", "sine", "-map", "0:v", "-map", "1:a",
                                       "-c:v", "copy", "-t", "0.5", "-shortest"}));
    ASSERT_TRUE(runUntil([&] { return player->state().hasSound; }));
    player->setMuted(true);
    player->setVolume(0.5);
    EXPECT_TRUE(runUntil([&] { return player->state().muted && player->state().volume == 0.5; }));
    EXPECT_TRUE(playToEnd());
}

TEST_F(PlayerTest, OtherCodecsAndContainersPlay)
{
    const std::vector<std::pair<std::string, std::vector<std::string>>> kinds = {
        {"vp9.webm", {"-c:v", "libvpx-vp9", "-deadline", "realtime", "-t", "0.3"}},
        {"hevc.mp4", {"-c:v", "libx265", "-preset", "ultrafast", "-t", "0.3"}},
        {"named like a picture.png", {"-c", "copy", "-f", "mp4"}},
        {"two.mp4", {"-map", "0:v", "-map", "0:v", "-c", "copy"}},
    };
    for (const auto& [name, options] : kinds) {
        SCOPED_TRACE(name);
        openPlayable(changed(name, options));
        EXPECT_EQ(number(), 0);
    }
}

TEST_F(PlayerTest, WhatCannotBePlayedFails)
{
    const std::string whole = contentOf(plain());
    writeFile(*films / "empty.mp4", "");
    writeFile(*films / "text.mp4", "this is no film\n");
    writeFile(*films / "list.mp4", "#EXTM3U\n" + plain() + "\n");
    writeFile(*films / "edl.mp4", "# mpv EDL v0\n" + plain() + "\n");
    writeFile(*films / "cut.mp4", whole.substr(0, 64)); // without its index
    ASSERT_EQ(mkfifo((*films / "pipe.mp4").c_str(), 0600), 0);
    Videos::make({"-f", "lavfi", "-i", "sine=duration=1", *films / "sound.mp4"});
    for (const std::string name : {"empty.mp4", "text.mp4", "list.mp4", "edl.mp4", "cut.mp4",
                                   "pipe.mp4", "sound.mp4", "none.mp4", ""})
    {
        SCOPED_TRACE(name);
        open(*films / name);
        EXPECT_TRUE(runUntil([&] { return player->state().phase == Phase::failed; }));
        EXPECT_TRUE(player->picture({64, 48}).isNull());
        player->play();
        player->seek(1);
        player->setEnd(1);
    }
}

TEST_F(PlayerTest, MayEndAtAnyTime)
{
    open(plain());
    player.reset();
    openPlayable(plain());
    player->play();
    player->seek(1);
    player.reset();
    settle();
}

TEST_F(PlayerTest, TheMainThreadNeitherOpensNorCloses)
{
    const auto isOpen = [] {
        const QDir descriptors(QStringLiteral("/proc/self/fd"));
        for (const QString& one : descriptors.entryList(QDir::Files | QDir::System))
            if (QFile::symLinkTarget(descriptors.filePath(one)).toStdString() == plain())
                return true;
        return false;
    };
    QThreadPool& others = Background::threads();
    const auto holdOthersUp = [&](bool on) {
        others.setMaxThreadCount(on ? 0 : std::numeric_limits<int>::max());
    };
    others.waitForDone(); // what was played before
    holdOthersUp(true);
    open(plain());
    EXPECT_FALSE(isOpen());
    holdOthersUp(false);
    ASSERT_TRUE(runUntil([&] { return player->state().phase == Phase::ready; }));
    player->play();
    EXPECT_TRUE(isOpen());
    holdOthersUp(true);
    player.reset();
    EXPECT_TRUE(isOpen());
    holdOthersUp(false);
    others.waitForDone();
    EXPECT_FALSE(isOpen());
}

TEST_F(PlayerTest, SaysNothingOfABrokenFilmWhateverElseEnded)
{
    // Of several libmpvs the first one takes what FFmpeg says, which is not quiet yet here.
    av_log_set_level(AV_LOG_INFO);
    openPlayable(plain());
    std::unique_ptr<Player> first = std::move(player);
    std::string broken = contentOf(plain());
    const std::size_t begin = broken.find("mdat"), end = broken.find("moov");
    ASSERT_LT(begin, end);
    for (std::size_t i = begin + (end - begin) / 2; i < end - 4; ++i)
        broken[i] = '\x55';
    writeFile(*films / "damaged.mp4", broken);
    openPlayable(*films / "damaged.mp4");
    testing::internal::CaptureStderr();
    first.reset();
    Background::threads().waitForDone();
    sought(timeOf(29));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(PlayerTest, OfABrokenTableWhatComesBeforePlays)
{
    const std::string fragments =
        contentOf(changed("fragments.mp4", {"-c", "copy", "-movflags",
                                            "frag_keyframe+empty_moov+default_base_moof"}));
    const std::size_t table = fragments.rfind("moof") - 4;
    const std::size_t data = fragments.rfind("mdat") - 4;
    ASSERT_LT(table, data);
    for (const std::size_t end : {table + 12, table + 40, (table + data) / 2, data - 1}) {
        SCOPED_TRACE(end - table);
        writeFile(*films / "broken.mp4", fragments.substr(0, end));
        openPlayable(*films / "broken.mp4");
        EXPECT_EQ(number(), 0);
    }
}

TEST_F(PlayerTest, FrameTimesAreThoseOfTheFile)
{
    const auto times = FilmTimes::read(QString::fromStdString(plain()));
    ASSERT_TRUE(times);
    ASSERT_EQ(times->frames.size(), std::size_t{frameCount});
    for (int frame = 0; frame < frameCount; ++frame)
        EXPECT_NEAR(times->frames[static_cast<std::size_t>(frame)], timeOf(frame), 1e-6);
    EXPECT_NEAR(times->duration, 1.2, 1e-6);
    EXPECT_FALSE(FilmTimes::read(QString::fromStdString(*films / "none.mp4")));
    Cancellation cancelled;
    cancelled.cancel();
    EXPECT_FALSE(FilmTimes::read(QString::fromStdString(plain()), {.cancellation = cancelled}));
}
