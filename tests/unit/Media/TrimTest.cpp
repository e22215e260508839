#include "Media/FFmpeg/Export/Trim.h"
#include "Media/FrameReader.h"
#include "Media/MovieExport.h"

#include "support/TemporaryFolder.h"
#include "unit/Media/FilmedSegment.h"
#include "unit/Media/PlayedMovie.h"
#include "unit/Media/Videos.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

constexpr int rate = 48000; // of our films' sound
constexpr double tick = 1.0 / 90000;

class Trim : public testing::Test {
protected:
    void SetUp() override { testing::internal::CaptureStderr(); }
    void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }

    static MovieExport::Outcome trim(const std::string& source, double start, double end,
                                     const std::string& destination)
    {
        return MovieExport::trim(QString::fromStdString(source), start, end,
                                 QString::fromStdString(destination));
    }

    void expectTrimmed(const std::string& source, double start, double end) const
    {
        const MovieExport::Outcome outcome = trim(source, start, end, m_target);
        ASSERT_TRUE(outcome.succeeded()) << outcome.reason;
        EXPECT_EQ(outcome.reason, "");
    }

    /// Three and a half seconds of pictures at uneven times, each with a grey of its own, and some
    /// clicks: more of them, and decoders would make up noise for what the encoder left out.
    static FilmedSegment segment()
    {
        FilmedSegment segment;
        for (int i = 0; i < 60; ++i)
            segment.frames.push_back({i * 0.05 + (i % 3) * 0.01 + (i >= 20 ? 0.3 : 0), 20 + 3 * i});
        segment.duration = 3.5;
        segment.hasSound = true;
        for (int at = 500; at < 3 * rate; at += 9001 + at % 89)
            segment.clicks.push_back(at);
        return segment;
    }

    /// It, as it lies among a user's films.
    std::string film(const FilmedSegment& of = segment()) const
    {
        writeFile(m_folder / "segment.mov", of.bytes());
        EXPECT_TRUE(MovieExport::remux(QString::fromStdString(m_folder / "segment.mov"),
                                       QString::fromStdString(m_folder / "film.mp4"))
                        .succeeded());
        fs::remove(m_folder / "segment.mov");
        return m_folder / "film.mp4";
    }

    /// What our own reader finds in it, and in `source`, at the same moments in any order.
    void expectFrames(const std::string& source, double start, double end) const
    {
        auto whole = FrameReader::open(QString::fromStdString(source));
        auto part = FrameReader::open(QString::fromStdString(m_target));
        ASSERT_TRUE(whole && part);
        EXPECT_NEAR(part->duration().value_or(0), end - start, 2 * tick);
        const double length = end - start - 0.001;
        for (const double time : {0.0, length, length / 2, length / 3, 0.0}) {
            const auto expected = whole->frameAt(start + time);
            const auto found = part->frameAt(time);
            ASSERT_TRUE(expected && found) << time;
            EXPECT_EQ(*found, *expected) << time;
        }
    }

    TemporaryFolder m_folder;
    std::string m_target = m_folder / "film trimmed.mp4";
};

/// What plays of `whole` from `start` up to `end` is all that plays of `part`.
void expectPart(const PlayedMovie& part, const PlayedMovie& whole, double start, double end)
{
    std::vector<PlayedMovie::Frame> expected;
    for (const PlayedMovie::Frame& frame : whole.frames) {
        if (frame.time >= end - tick)
            continue;
        if (frame.time < start + tick)
            expected.clear();
        expected.push_back(frame);
        expected.back().time = std::max(frame.time - start, 0.0);
    }
    ASSERT_EQ(part.frames.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(part.frames[i].time, expected[i].time, tick) << i;
        EXPECT_EQ(part.frames[i].luma, expected[i].luma) << i;
    }
    EXPECT_NEAR(part.picture.duration, std::min(end, whole.picture.duration) - start, 2 * tick);
    EXPECT_TRUE(part.hasIndexInFront);
    // For players that show it all: next to nothing, but nothing that is nearly at 0.
    for (const PlayedMovie::Packet& packet : part.picture.packets)
        EXPECT_TRUE(packet.time >= 0 || (packet.time > -0.012 && packet.time < -0.006))
            << packet.time;
    const auto first = static_cast<std::size_t>(std::llround(start * rate));
    if (whole.samples.size() <= first)
        return;
    const double length = std::min(end * rate, static_cast<double>(whole.samples.size())) -
                          static_cast<double>(first);
    const auto count = static_cast<std::size_t>(std::llround(length));
    ASSERT_GE(part.samples.size(), count);
    // FFmpeg reads of the end of an edit in whole blocks.
    EXPECT_LT(part.samples.size(), count + 1024);
    EXPECT_NEAR(part.sound.duration, length / rate, 2.0 / rate);
    for (std::size_t i = 0; i < count; ++i)
        ASSERT_EQ(part.samples[i], whole.samples[first + i]) << i;
}

} // namespace

TEST_F(Trim, PlaysTheRangeToTheFrameAndTheSample)
{
    const std::string source = film();
    const PlayedMovie whole = PlayedMovie::of(source);
    ASSERT_EQ(whole.frames.size(), 60U);
    const std::vector<std::pair<double, double>> ranges{
        {0, 1},                      // from the beginning
        {whole.frames[7].time, 2.5}, // on a picture, and up to one
        {whole.frames[7].time, whole.frames[9].time},
        {0.777, 3.123},                                 // between pictures
        {1.2, 1.21},                                    // within one that shows long
        {2.01, 3.5},                                    // past a key frame, up to the end
        {whole.frames[59].time + 0.01, 3.5},            // in the last picture
        {0, 3.5},                                       // all
        {-5, std::numeric_limits<double>::infinity()}}; // and more than that
    for (const auto& [start, end] : ranges) {
        SCOPED_TRACE(testing::Message() << start << " to " << end);
        expectTrimmed(source, start, end);
        expectPart(PlayedMovie::of(m_target), whole, std::max(start, 0.0), std::min(end, 3.5));
        EXPECT_THAT(m_folder.names(), ElementsAre("film trimmed.mp4", "film.mp4"));
        expectFrames(source, std::max(start, 0.0), std::min(end, 3.5));
    }
}

TEST_F(Trim, DecodesWhatTheFirstSampleBuildsUpon)
{
    const std::string source = m_folder / "tone.mp4";
    Videos::make({"-f", "lavfi", "-i", "color=s=16x16:r=10:d=1", "-f", "lavfi", "-i",
                  "sine=r=48000:d=1", "-bf", "0", "-video_track_timescale", "90000", "-c:a", "aac",
                  "-aac_pns", "0", source});
    expectTrimmed(source, 0.51, 0.6);
    expectPart(PlayedMovie::of(m_target), PlayedMovie::of(source), 0.51, 0.6);
}

TEST_F(Trim, OfAJoinedFilmAndOfATrimmedOne)
{
    for (const std::string name : {"a.mov", "b.mov"})
        writeFile(m_folder / name, segment().bytes());
    const std::string joined = m_folder / "joined.mp4", once = m_folder / "once.mp4";
    ASSERT_TRUE(MovieExport::concatenate({QString::fromStdString(m_folder / "a.mov"),
                                          QString::fromStdString(m_folder / "b.mov")},
                                         QString::fromStdString(joined))
                    .succeeded());
    const PlayedMovie whole = PlayedMovie::of(joined);
    ASSERT_EQ(whole.frames.size(), 120U);
    ASSERT_TRUE(trim(joined, 1.234, 6.5, once).succeeded());
    expectPart(PlayedMovie::of(once), whole, 1.234, 6.5);
    expectTrimmed(once, 0.4, 4);
    expectPart(PlayedMovie::of(m_target), whole, 1.634, 5.234);
    expectTrimmed(once, 0, 0.5);
    expectPart(PlayedMovie::of(m_target), whole, 1.234, 1.734);
}

TEST_F(Trim, OfASegmentThatIsNoFilmYetAndWithoutSound)
{
    FilmedSegment silent = segment();
    silent.hasSound = false;
    const std::string source = m_folder / "segment.mov";
    writeFile(source, silent.bytes());
    expectTrimmed(source, 2.111, 3.333);
    const PlayedMovie part = PlayedMovie::of(m_target);
    expectPart(part, PlayedMovie::of(source), 2.111, 3.333);
    EXPECT_EQ(part.sound.codec, "");
}

TEST_F(Trim, OfAFilmThatBeginsLaterKeepsItsTimeLine)
{
    const std::string source = m_folder / "late.mov";
    FilmedSegment silent = segment();
    silent.hasSound = false;
    writeFile(source, FilmedSegment::withoutFirstFragment(silent.bytes()));
    const PlayedMovie whole = PlayedMovie::of(source);
    expectTrimmed(source, 2.111, 3.333);
    expectPart(PlayedMovie::of(m_target), whole, 2.111, 3.333);
    const double first = whole.frames.front().time;
    ASSERT_GT(first, 0.5);
    expectTrimmed(source, 0.25, 3);
    EXPECT_NEAR(PlayedMovie::of(m_target).frames.front().time, first - 0.25, tick);
}

TEST_F(Trim, PastTheLastPictureThatStaysWhileThereIsSound)
{
    FilmedSegment brief = segment();
    brief.frames.resize(30);
    const std::string longSound = m_folder / "long.mp4";
    Videos::make({"-i", film(brief), "-f", "lavfi", "-i", "aevalsrc=random(0):s=48000:d=6", "-map",
                  "0:v", "-map", "1:a", "-c:v", "copy", "-c:a", "aac", longSound});
    const PlayedMovie whole = PlayedMovie::of(longSound);
    ASSERT_LT(whole.picture.duration, 4);
    expectTrimmed(longSound, 4.5, 5.5);
    const PlayedMovie part = PlayedMovie::of(m_target);
    ASSERT_EQ(part.frames.size(), 1U);
    EXPECT_EQ(part.frames[0].luma, whole.frames.back().luma);
    EXPECT_NEAR(part.picture.duration, 1, 2 * tick);
    EXPECT_NEAR(part.sound.duration, 1, 2 * tick);
    EXPECT_EQ(trim(longSound, 6.1, 7, m_target).end, MovieExport::End::failed);
}

TEST_F(Trim, OfAForeignFilmTakesWhatPlaysAndItsTurn)
{
    // Pictures that refer to later ones, of 30 a second, and two tracks of sound.
    const std::string made = m_folder / "made.mp4";
    std::string raw;
    for (int i = 0; i < 70; ++i)
        raw += std::string(64 * 48, static_cast<char>(Videos::greyOf(i)));
    writeFile(m_folder / "raw", raw);
    Videos::make({"-f",       "rawvideo",
                  "-pix_fmt", "gray",
                  "-s",       "64x48",
                  "-r",       "30",
                  "-i",       m_folder / "raw",
                  "-f",       "lavfi",
                  "-i",       "aevalsrc=random(0):s=48000:d=2.2",
                  "-f",       "lavfi",
                  "-i",       "sine=r=48000:d=2.2",
                  "-map",     "0",
                  "-map",     "1",
                  "-map",     "2",
                  "-pix_fmt", "yuv420p",
                  "-bf",      "3",
                  "-g",       "20",
                  "-c:a",     "aac",
                  made});
    const std::string source = m_folder / "turned.mp4";
    writeFile(source, Videos::withMatrix(contentOf(made), 0, 1, -1, 0));
    const PlayedMovie whole = PlayedMovie::of(source);
    ASSERT_LT(whole.picture.packets.front().decodedTime, 0);
    for (const auto& [first, last] : std::vector<std::pair<int, int>>{{0, 69}, {25, 48}, {41, 60}})
    {
        SCOPED_TRACE(first);
        expectTrimmed(source, (first + 0.5) / 30, (last + 0.5) / 30);
        const PlayedMovie part = PlayedMovie::of(m_target);
        EXPECT_EQ(part.turn, whole.turn);
        ASSERT_GT(part.frames.size(), static_cast<std::size_t>(last - first));
        EXPECT_LE(part.frames.size(), static_cast<std::size_t>(last - first + 4));
        for (std::size_t i = 0; i <= static_cast<std::size_t>(last - first); ++i)
            EXPECT_EQ(part.frames[i].luma,
                      whole.frames.at(static_cast<std::size_t>(first) + i).luma);
        EXPECT_NEAR(part.frames[0].time, 0, tick);
        EXPECT_NEAR(part.frames[1].time, 0.5 / 30, tick);
        EXPECT_NEAR(part.sound.duration, std::min((last + 0.5) / 30, 2.2) - (first + 0.5) / 30,
                    2 * tick);
    }
}

TEST_F(Trim, OfMatroskaWhichDoesNotSayWhenPicturesAreDecoded)
{
    writeFile(m_folder / "raw", Videos::greyFrames(70));
    struct Kind {
        std::string file;
        std::vector<std::string> options;
        double length; // of a picture, in seconds
    };
    constexpr double brief = 1.0 / 30, slow = 1.0 / 3;
    const std::vector<Kind> kinds = {
        {"b.mkv", {"-c:v", "libx264", "-bf", "3", "-g", "20"}, brief},
        {"open.mkv",
         {"-c:v", "libx264", "-bf", "3", "-x264-params", "keyint=20:b-pyramid=normal:open-gop=1"},
         brief},
        {"plain.mkv", {"-c:v", "libx264", "-bf", "0", "-g", "20"}, brief},
        {"vp9.webm", {"-c:v", "libvpx-vp9", "-deadline", "realtime", "-g", "20"}, brief},
        {"slow.mkv",
         {"-vf", "setpts=10*PTS", "-r", "3", "-c:v", "libx264", "-bf", "3", "-g", "20"},
         slow},
        {"slow.webm",
         {"-vf", "setpts=10*PTS", "-r", "3", "-c:v", "libvpx-vp9", "-deadline", "realtime", "-g",
          "20"},
         slow},
    };
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.file);
        const std::string source = m_folder / kind.file;
        Videos::encode(m_folder / "raw", kind.options, source);
        const PlayedMovie whole = PlayedMovie::of(source);
        ASSERT_EQ(whole.frames.size(), 70U);
        for (const auto& [first, last] : {std::pair(0U, 69U), std::pair(45U, 58U)}) {
            SCOPED_TRACE(first);
            expectTrimmed(source, (first + 0.5) * kind.length, (last + 0.5) * kind.length);
            const PlayedMovie part = PlayedMovie::of(m_target);
            ASSERT_GT(part.frames.size(), last - first);
            EXPECT_LE(part.frames.size(), last - first + 4);
            for (std::size_t i = 0; i <= last - first; ++i) {
                EXPECT_EQ(part.frames[i].luma, whole.frames.at(first + i).luma) << i;
                // Matroska's times are whole milliseconds.
                EXPECT_NEAR(part.frames[i].time,
                            i == 0 ? 0 : (static_cast<double>(i) - 0.5) * kind.length, 0.002);
            }
        }
    }
}

TEST_F(Trim, OfMatroskaMayHavePicturesThatAreOvertakenOnlyLater)
{
    const std::string first = m_folder / "first.ts", second = m_folder / "second.ts";
    const std::string source = m_folder / "both.mkv";
    Videos::make({"-f", "lavfi", "-i", "color=gray:s=64x48:r=30:d=3,noise=alls=100:allf=t", "-c:v",
                  "libx264", "-bf", "3", "-x264-params",
                  "b-adapt=2:b-bias=-100:scenecut=0:keyint=30", first}); // none
    Videos::make({"-f", "lavfi", "-i", "testsrc2=s=64x48:r=30:d=2", "-c:v", "libx264", "-bf", "3",
                  "-x264-params", "b-adapt=0:scenecut=0:keyint=30", second}); // three of four
    Videos::make({"-i", "concat:" + first + "|" + second, "-c", "copy", source});
    expectTrimmed(source, 0.99, 4.51);
    EXPECT_GE(PlayedMovie::of(m_target).frames.size(), 105U);
}

TEST_F(Trim, OfAnotherKindOfVp9IsAFailure)
{
    const std::string source = m_folder / "full.webm";
    Videos::make({"-f", "lavfi", "-i", "testsrc2=s=64x48:r=10:d=0.5", "-pix_fmt", "yuv444p", "-c:v",
                  "libvpx-vp9", "-deadline", "realtime", source});
    EXPECT_THAT(trim(source, 0, 0.3, m_target).reason, HasSubstr("this kind of VP9"));
    EXPECT_THAT(m_folder.names(), ElementsAre("full.webm"));
}

TEST_F(Trim, HoldsNoMoreThanItMay)
{
    const QString source = QString::fromStdString(film());
    const auto size = fs::file_size(m_folder / "film.mp4");
    const auto holding = [&](std::size_t most) {
        return trimMovieHolding(most, source, 2, 3, QString::fromStdString(m_target), {});
    };
    EXPECT_THAT(holding(10).reason, HasSubstr("too far from a key frame"));
    EXPECT_THAT(m_folder.names(), ElementsAre("film.mp4"));
    EXPECT_TRUE(holding(size).succeeded());
}

TEST_F(Trim, MakesAacOfSoundThatMp4CannotHold)
{
    // Matroska tells the length of the whole alone.
    for (const char* const name : {"pcm.mov", "pcm.mkv"}) {
        const std::string source = m_folder / name;
        Videos::make({"-f", "lavfi", "-i", "testsrc2=s=64x48:r=10:d=3", "-f", "lavfi", "-i",
                      "aevalsrc=gte(t\\,1.5)*0.5*sin(2*PI*1000*t):s=44100:d=3", "-c:a", "pcm_s16le",
                      "-bf", "0", source});
        for (const double end : {2.0, 3.0, 9.0}) {
            SCOPED_TRACE(testing::Message() << name << " to " << end);
            expectTrimmed(source, 1.25, end);
            const PlayedMovie movie = PlayedMovie::of(m_target);
            EXPECT_EQ(movie.sound.codec, "aac");
            const double length = std::min(end, 3.0) - 1.25;
            EXPECT_NEAR(movie.picture.duration, length, 0.001);
            EXPECT_NEAR(movie.sound.duration, length, 0.001);
            const auto onset = std::find_if(movie.samples.begin(), movie.samples.end(),
                                            [](float sample) { return std::abs(sample) > 0.2; });
            EXPECT_NEAR(static_cast<double>(onset - movie.samples.begin()) / rate, 0.25, 0.001);
        }
    }
}

TEST_F(Trim, OfNothingIsAFailureThatLeavesNothing)
{
    const std::string source = film();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const auto expectFailure = [&](double start, double end, const std::string& reason,
                                   const Cancellation& cancellation = {}) {
        const MovieExport::Outcome outcome =
            MovieExport::trim(QString::fromStdString(source), start, end,
                              QString::fromStdString(m_target), cancellation);
        EXPECT_EQ(outcome.end, MovieExport::End::failed);
        EXPECT_THAT(outcome.reason, HasSubstr(reason));
    };
    expectFailure(3.6, 5, "nothing plays");
    expectFailure(3.5, 5, "nothing plays");
    for (const auto& [start, end] : std::vector<std::pair<double, double>>{
             {1, 1}, {2, 1}, {-2, -1}, {-2, 0}, {nan, 1}, {1, nan}, {nan, nan}})
        expectFailure(start, end, "range is empty");
    const Cancellation cancelled;
    cancelled.cancel();
    expectFailure(0, 1, "cancelled", cancelled);
    EXPECT_EQ(trim(m_folder / "missing", 0, 1, m_target).end, MovieExport::End::failed);
    EXPECT_THAT(m_folder.names(), ElementsAre("film.mp4"));
}
