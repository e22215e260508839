#include "GIFExporter.h"

#include "Media/MovieExport.h"
#include "support/ChildProcess.h"
#include "support/EventLoop.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/FilmedSegment.h"
#include "unit/Media/PlayedGIF.h"
#include "unit/Media/Videos.h"

#include <QCoreApplication>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <limits>
#include <optional>

#include <sys/resource.h>

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

constexpr double infinity = std::numeric_limits<double>::infinity();

class GIFExport : public testing::Test {
protected:
    /// A film of 60 grey frames, each of which shows for so many thirtieths of a second.
    std::string film(int thirtieths, const std::string& name = "film.mp4",
                     const std::vector<std::string>& options = {"-bf", "0"})
    {
        writeFile(m_folder / "raw", Videos::greyFrames(60));
        std::vector<std::string> all = options;
        const std::string times = std::to_string(thirtieths);
        all.insert(all.end(), {"-vf", "setpts=" + times + "*PTS,fps=30/" + times});
        Videos::encode(m_folder / "raw", all, m_folder / name);
        return m_folder / name;
    }

    /// Whether there is a GIF; waits for it.
    bool exported(const std::string& video, TimeRange range = {0, infinity})
    {
        std::optional<bool> result;
        int calls = 0;
        GIFExporter::exportVideo(
            QUrl::fromLocalFile(QString::fromStdString(video)), range,
            QUrl::fromLocalFile(QString::fromStdString(m_gif)), [&](bool succeeded) {
                result = succeeded;
                ++calls;
                EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
            });
        EXPECT_EQ(calls, 0) << "it has not returned yet";
        EXPECT_TRUE(runUntil([&] { return result.has_value(); }));
        settle();
        EXPECT_EQ(calls, 1);
        return result.value_or(false);
    }

    /// Which of the frames of `film` are in the GIF of a part of it.
    std::vector<int> numbers(const std::string& video, TimeRange range = {0, infinity})
    {
        if (!exported(video, range))
            return {};
        m_played = PlayedGIF::of(m_gif);
        EXPECT_TRUE(m_played.isEndless);
        std::vector<int> numbers;
        for (const int grey : m_played.greys())
            numbers.push_back(Videos::numberOf(grey));
        return numbers;
    }

    TemporaryFolder m_folder;
    std::string m_gif = m_folder / "made.gif";
    PlayedGIF m_played;
};

/// Numbers from `first` on, each `times` times.
std::vector<int> counted(int first, int count, int times = 1)
{
    std::vector<int> all;
    for (int i = 0; i < count; ++i)
        all.push_back(first + i / times);
    return all;
}

} // namespace

TEST_F(GIFExport, OfThreeSecondsHasThirtyFrames)
{
    const std::string video = film(3); // ten a second, six seconds
    EXPECT_EQ(numbers(video, {0, 3}), counted(0, 30));
    EXPECT_THAT(m_played.delays, Each(10));
    EXPECT_EQ(m_played.frames.at(0).size(), QSize(64, 48)) << "not enlarged";
    EXPECT_EQ(numbers(video, {2, 3}), counted(20, 30)) << "the file is replaced";
    for (const double none : {infinity, 0.0, -1.0, std::nan("")})
        EXPECT_EQ(numbers(video, {0, none}), counted(0, 60)) << none;
    std::vector<int> late = counted(40, 20);
    late.push_back(59); // just past the end
    EXPECT_EQ(numbers(video, {4, infinity}), late) << "as long, but later: what is there";
    EXPECT_EQ(fs::status(m_gif).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(GIFExport, OfAMinuteHas240FramesHoweverLongEachOfTheFilmShows)
{
    EXPECT_EQ(numbers(film(30)), counted(0, 240, 4));
    EXPECT_THAT(m_played.delays, Each(25));
}

TEST_F(GIFExport, OfAnInstantHasTwoFramesOrOne)
{
    const std::string video = film(3);
    EXPECT_THAT(numbers(video, {0, 0.05}), ElementsAre(0, 1));
    EXPECT_THAT(m_played.delays, Each(10));
    EXPECT_THAT(numbers(video, {5.93, 0.05}), ElementsAre(59, 59)) << "0.03 s past the end";
    EXPECT_THAT(numbers(video, {5.94, 0.05}), ElementsAre(59)) << "0.04 s past the end";
}

TEST_F(GIFExport, TakesAFrameThatBeginsJustAfterTheTime)
{
    const auto late = [this](const std::string& seconds) {
        writeFile(m_folder / "raw", Videos::greyFrames(10));
        Videos::encode(m_folder / "raw",
                       {"-vf", "settb=1/1000,setpts=3*PTS+" + seconds + "/TB", "-fps_mode",
                        "passthrough", "-bf", "0", "-enc_time_base", "1/1000"},
                       m_folder / "late.mkv");
        return m_folder / "late.mkv";
    };
    EXPECT_THAT(numbers(late("0.03"), {0, 0.3}), ElementsAre(0, 0, 1));
    EXPECT_THAT(numbers(late("0.04"), {0, 0.3}), ElementsAre(0, 1));
}

TEST_F(GIFExport, OfOurFilmsShowsWhatStandsForAsLongAsItStands)
{
    FilmedSegment segment;
    segment.frames = {{0, 40}, {0.05, 80}, {0.3, 120}, {2, 160}};
    segment.duration = 5;
    writeFile(m_folder / "segment.mov", segment.bytes());
    const QString mp4 = QString::fromStdString(m_folder / "film.mp4");
    ASSERT_TRUE(
        MovieExport::remux(QString::fromStdString(m_folder / "segment.mov"), mp4).succeeded());
    std::vector<int> greys(1, 40);
    greys.insert(greys.end(), 2, 80);
    greys.insert(greys.end(), 17, 120);
    greys.insert(greys.end(), 30, 160);
    for (int& grey : greys)
        grey = qRound((grey - 16) * 255 / 219.0);
    for (const std::string name : {"film.mp4", "segment.mov"}) {
        ASSERT_TRUE(exported(m_folder / name)) << name;
        const std::vector<int> shown = PlayedGIF::of(m_gif).greys();
        EXPECT_THAT(shown, testing::Pointwise(testing::Truly([](const auto& pair) {
                                                  return std::abs(std::get<0>(pair) -
                                                                  std::get<1>(pair)) <= 1;
                                              }),
                                              greys))
            << name;
    }
}

TEST_F(GIFExport, IsUprightAndFitsInto800Pixels)
{
    Videos::make({"-f", "lavfi", "-i", "color=white:s=1280x720:d=0.2,drawbox=h=360:c=black:t=fill",
                  "-pix_fmt", "yuv420p", "-preset", "ultrafast", m_folder / "wide.mp4"});
    ASSERT_TRUE(exported(m_folder / "wide.mp4"));
    EXPECT_EQ(PlayedGIF::of(m_gif).frames.at(0).size(), QSize(800, 450));
    // A quarter clockwise: x' = -y, y' = x.
    writeFile(m_folder / "high.mp4",
              Videos::withMatrix(contentOf(m_folder / "wide.mp4"), 0, 1, -1, 0));
    ASSERT_TRUE(exported(m_folder / "high.mp4"));
    const QImage high = PlayedGIF::of(m_gif).frames.at(0);
    EXPECT_EQ(high.size(), QSize(450, 800));
    EXPECT_GT(qGray(high.pixel(100, 400)), 250);
    EXPECT_LT(qGray(high.pixel(350, 400)), 5);
}

TEST_F(GIFExport, IsSharpAndScaledByWhatEveryPixelIs)
{
    // Columns, black and white in turn.
    const auto columns = [this](const std::string& size) {
        Videos::make({"-f", "lavfi", "-i",
                      "nullsrc=s=" + size + ":d=0.1,geq=lum='16+219*mod(X,2)':cb=128:cr=128",
                      "-pix_fmt", "yuv420p", "-preset", "ultrafast", "-qp", "1",
                      m_folder / "columns.mp4"});
        EXPECT_TRUE(exported(m_folder / "columns.mp4"));
        return PlayedGIF::of(m_gif).frames.at(0);
    };
    const QImage whole = columns("400x16");
    ASSERT_EQ(whole.size(), QSize(400, 16));
    for (int x = 0; x < 400; ++x)
        ASSERT_NEAR(qGray(whole.pixel(x, 7)), x % 2 * 255, 3) << x;
    const QImage half = columns("1600x16");
    ASSERT_EQ(half.size(), QSize(800, 8));
    for (int x = 1; x < 799; ++x)
        ASSERT_NEAR(qGray(half.pixel(x, 3)), 128, 6) << x;
}

TEST_F(GIFExport, IsMadeOfFilmsOfAllKinds)
{
    const std::vector<std::pair<std::string, std::vector<std::string>>> kinds = {
        {"h264.mov", {"-bf", "3"}},
        {"fragments.mp4", {"-bf", "0", "-g", "10", "-movflags", "frag_keyframe+empty_moov"}},
        {"hevc.mp4", {"-c:v", "libx265", "-x265-params", "log-level=none:bframes=2"}},
        {"vp9.webm", {"-c:v", "libvpx-vp9", "-b:v", "0", "-deadline", "realtime"}},
        {"no-video.txt", {"-f", "mp4"}},
        {"no-duration.webm",
         {"-c:v", "libvpx", "-b:v", "1M", "-deadline", "realtime", "-live", "1"}},
    };
    for (const auto& [name, options] : kinds)
        EXPECT_EQ(numbers(film(3, name, options)), counted(0, 60)) << name;
    // The last one shows as long as the others.
    for (const std::string name : {"h264.mov", "fragments.mp4", "vp9.webm"})
        EXPECT_THAT(numbers(m_folder / name, {5.98, 0.05}), ElementsAre(59)) << name;
}

TEST_F(GIFExport, OfAFilmThatIsBrokenOffHasWhatIsThere)
{
    const std::string whole = contentOf(film(3, "film.mkv", {"-bf", "0", "-g", "5"}));
    writeFile(m_folder / "half.mkv", whole.substr(0, whole.size() / 2));
    std::vector<int> there = numbers(m_folder / "half.mkv");
    there.pop_back(); // the last, just past its end
    EXPECT_GT(there.size(), 10U);
    EXPECT_LT(there.size(), 50U);
    EXPECT_EQ(there, counted(0, static_cast<int>(there.size())));
}

TEST_F(GIFExport, OfWhatIsNoFilmIsAFailureThatLeavesEverythingAsItWas)
{
    writeFile(m_folder / "empty.mp4", "");
    writeFile(m_folder / "text.mp4", "no film");
    const std::string whole = contentOf(film(3));
    writeFile(m_folder / "half.mp4", whole.substr(0, whole.size() / 2)); // the index is at its end
    writeFile(m_gif, "old");
    const std::vector<std::string> names = m_folder.names();
    for (const std::string name : {"empty.mp4", "text.mp4", "half.mp4", "missing.mp4", "."})
        EXPECT_FALSE(exported(m_folder / name)) << name;
    EXPECT_FALSE(exported(m_folder / "film.mp4", {100, 3})) << "past the end";
    EXPECT_FALSE(exported(m_folder / "film.mp4", {infinity, 3}));
    EXPECT_FALSE(exported(m_folder / "film.mp4", {std::nan(""), 3}));
    EXPECT_EQ(m_folder.names(), names);
    EXPECT_EQ(contentOf(m_gif), "old");
}

TEST_F(GIFExport, ThatCannotBeWrittenIsAFailureThatLeavesNothing)
{
    const std::string video = film(3);
    m_gif = m_folder / "missing/made.gif";
    EXPECT_FALSE(exported(video));
    EXPECT_FALSE(fs::exists(m_folder / "missing"));
    // As a full disk does, some way into the file.
    fs::create_directory(m_folder / "out");
    m_gif = m_folder / "out/made.gif";
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{2'000, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const bool succeeded = exported(video);
    const bool isEmpty = fs::is_empty(m_folder / "out");
    writeFile(m_gif, "old");
    const bool succeededOverOld = exported(video);
    setrlimit(RLIMIT_FSIZE, &usual);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(succeeded);
    EXPECT_TRUE(isEmpty);
    EXPECT_FALSE(succeededOverOld);
    EXPECT_EQ(contentOf(m_gif), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder / "out"), {}), 1);
    EXPECT_TRUE(exported(video));
}

TEST_F(GIFExport, WhatWasAskedForLastStays)
{
    const std::string video = film(30);
    std::vector<bool> results;
    for (const double duration : {infinity, 0.05}) { // the first takes far longer
        GIFExporter::exportVideo(QUrl::fromLocalFile(QString::fromStdString(video)), {0, duration},
                                 QUrl::fromLocalFile(QString::fromStdString(m_gif)),
                                 [&](bool succeeded) { results.push_back(succeeded); });
    }
    EXPECT_TRUE(runUntil([&] { return results.size() == 2; }));
    EXPECT_THAT(results, Each(true));
    EXPECT_EQ(PlayedGIF::of(m_gif).greys().size(), 2u);
}

TEST_F(GIFExport, IsGivenUpWhenTheProgramEnds)
{
    fs::create_directory(m_folder / "out");
    const Outcome outcome = run({{TAMRIK_GIF_PROGRAM, film(3), m_folder / "out/made.gif"}, {}});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(fs::is_empty(m_folder / "out"));
}
