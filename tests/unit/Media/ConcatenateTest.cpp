#include "Media/MovieExport.h"

#include "support/TemporaryFolder.h"
#include "unit/Media/FilmedSegment.h"
#include "unit/Media/PlayedMovie.h"
#include "unit/Media/Videos.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

constexpr double tick = 1.0 / 90000; // seconds
constexpr int soundRate = 48000;

class Concatenate : public testing::Test {
protected:
    void SetUp() override { testing::internal::CaptureStderr(); }
    void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }

    void add(const std::string& bytes)
    {
        const std::string path = m_folder / ("segment" + std::to_string(m_segments.size()));
        writeFile(path, bytes);
        m_segments.append(QString::fromStdString(path));
    }
    void add(const FilmedSegment& segment) { add(segment.bytes()); }

    MovieExport::Outcome join() const
    {
        return MovieExport::concatenate(m_segments, QString::fromStdString(m_target));
    }

    PlayedMovie joined() const
    {
        const MovieExport::Outcome outcome = join();
        EXPECT_TRUE(outcome.succeeded()) << outcome.reason;
        return PlayedMovie::of(m_target);
    }

    TemporaryFolder m_folder;
    QStringList m_segments;
    std::string m_target = m_folder / "film.mp4";
};

void expectGreys(const PlayedMovie& movie, const std::vector<int>& expected)
{
    ASSERT_EQ(movie.frames.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(movie.frames[i].grey, expected[i], 1) << i;
}

/// Decoded as they are shown, a key at least every second.
void expectPlain(const PlayedMovie& movie)
{
    double lastKey = 0;
    ASSERT_FALSE(movie.picture.packets.empty());
    EXPECT_TRUE(movie.picture.packets.front().isKey);
    for (const PlayedMovie::Packet& packet : movie.picture.packets) {
        EXPECT_EQ(packet.time, packet.decodedTime);
        lastKey = packet.isKey ? packet.time : lastKey;
        EXPECT_LE(packet.time - lastKey, 1 + tick) << packet.time;
    }
}

/// Of two pictures, a pixel's on the average.
double difference(const PlayedMovie::Frame& a, const PlayedMovie::Frame& b)
{
    double sum = 0;
    for (std::size_t i = 0; i < std::min(a.luma.size(), b.luma.size()); ++i)
        sum += std::abs(int{static_cast<unsigned char>(a.luma[i])} -
                        int{static_cast<unsigned char>(b.luma[i])});
    return sum / static_cast<double>(std::max(a.luma.size(), b.luma.size()));
}

FilmedSegment clicking(double duration, std::vector<int> clicks)
{
    FilmedSegment segment = FilmedSegment::steady(duration, 10, 100);
    segment.hasSound = true;
    segment.clicks = std::move(clicks);
    return segment;
}

double loudest(const PlayedMovie& movie, double from, double to)
{
    const int place =
        movie.loudestBetween(static_cast<int>(from * soundRate), static_cast<int>(to * soundRate));
    return std::abs(movie.samples.at(static_cast<std::size_t>(place)));
}

} // namespace

TEST_F(Concatenate, LaysPicturesEndToEnd)
{
    FilmedSegment uneven;
    uneven.frames = {{0, 60}, {0.013, 70}, {0.6, 80}, {0.61, 90}};
    uneven.duration = 1.0372;
    add(FilmedSegment::steady(0.5, 10, 120));
    add(uneven);
    add(FilmedSegment::steady(0.31, 10, 200));
    const PlayedMovie movie = joined();
    expectGreys(movie, {120, 120, 120, 120, 120, 60, 70, 80, 90, 200, 200, 200, 200});
    const std::vector<double> times{0,   0.1,  0.2,    0.3,    0.4,    0.5,   0.513,
                                    1.1, 1.11, 1.5372, 1.6372, 1.7372, 1.8372};
    ASSERT_EQ(movie.frames.size(), times.size());
    for (std::size_t i = 0; i < times.size(); ++i)
        EXPECT_NEAR(movie.frames[i].time, times[i], tick) << i;
    EXPECT_NEAR(movie.picture.duration, 0.5 + 1.0372 + 0.31, 2 * tick);
    for (const std::size_t first : {0U, 5U, 9U})
        EXPECT_TRUE(movie.picture.packets[first].isKey) << first;
    expectPlain(movie);
    EXPECT_EQ(movie.picture.codec, "h264");
    EXPECT_EQ(movie.sound.codec, "");
    EXPECT_EQ(movie.colours, "tv bt709 bt709 bt709");
    EXPECT_TRUE(movie.hasIndexInFront);
    EXPECT_THAT(m_folder.names(), ElementsAre("film.mp4", "segment0", "segment1", "segment2"));
    EXPECT_EQ(fs::status(m_target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Concatenate, EncodesALongSegmentInPiecesThatMissNothing)
{
    FilmedSegment segment;
    std::vector<int> greys;
    for (int i = 0; i < 190; ++i) {
        greys.push_back(30 + i);
        segment.frames.push_back({i * 0.05, greys.back()});
    }
    segment.duration = 9.5;
    add(segment);
    const PlayedMovie movie = joined();
    expectGreys(movie, greys);
    expectPlain(movie);
    for (std::size_t i = 0; i < movie.frames.size(); ++i)
        EXPECT_NEAR(movie.frames[i].time, segment.frames[i].time, tick);
    EXPECT_NEAR(movie.picture.duration, 9.5, tick);
    const std::string bytes = contentOf(m_target);
    ASSERT_TRUE(join().succeeded());
    EXPECT_TRUE(contentOf(m_target) == bytes) << "whoever was quicker this time";
}

TEST_F(Concatenate, ReadsFramesThatReachAcrossKeyFrames)
{
    const std::string path = m_folder / "open.mp4";
    Videos::make({"-f", "lavfi", "-i", "testsrc2=s=96x64:r=10:d=7.5", "-pix_fmt", "yuv420p", "-bf",
                  "3", "-x264-params", "b-adapt=0:keyint=12:scenecut=0:open-gop=1", path});
    const PlayedMovie once = PlayedMovie::of(path);
    ASSERT_EQ(once.frames.size(), 75U);
    m_segments = {QString::fromStdString(path), QString::fromStdString(path)};
    const PlayedMovie movie = joined();
    ASSERT_EQ(movie.frames.size(), 150U);
    for (std::size_t i = 0; i < movie.frames.size(); ++i) {
        EXPECT_NEAR(movie.frames[i].time, static_cast<double>(i) / 10, 2 * tick);
        EXPECT_LT(difference(movie.frames[i], once.frames[i % 75]), 5) << i;
    }
    expectPlain(movie);
}

TEST_F(Concatenate, CutsSoundThatIsLongerThanItsSegment)
{
    // What comes out of AAC are whole blocks, however short the last one is said to be.
    const std::string path = m_folder / "aac.mov";
    Videos::make({"-f", "lavfi", "-i", "color=gray:s=64x48:r=10:d=0.5", "-f", "lavfi", "-i",
                  "sine=r=48000:d=0.5", "-c:a", "aac", "-bf", "0", path});
    m_segments = {QString::fromStdString(path), QString::fromStdString(path)};
    const PlayedMovie movie = joined();
    EXPECT_NEAR(movie.picture.duration, 1, tick);
    EXPECT_NEAR(movie.sound.duration, 1, 1.0 / soundRate);
}

TEST_F(Concatenate, FiftySegmentsLaterPictureAndSoundAreTogetherToTheSample)
{
    // None of them is a whole number of frames, of blocks of sound or of milliseconds. In each a
    // white picture and a click come at once.
    constexpr int count = 50;
    constexpr double flash = 0.2;
    FilmedSegment segment;
    segment.frames = {{0, 50}, {0.1, 50}, {flash, 230}, {0.25, 50}};
    segment.hasSound = true;
    segment.clicks = {static_cast<int>(flash * soundRate)};
    const auto durationOf = [](int i) { return 0.4 + 0.01237 * (i % 7); };
    for (int i = 0; i < count; ++i) {
        segment.duration = durationOf(i);
        add(segment);
    }
    const PlayedMovie movie = joined();
    std::vector<double> flashes;
    for (const PlayedMovie::Frame& frame : movie.frames) {
        if (frame.grey > 200)
            flashes.push_back(frame.time);
    }
    ASSERT_EQ(flashes.size(), count);
    double cursor = 0;
    int furthest = 0;
    for (int i = 0; i < count; ++i) {
        const double time = cursor + flash;
        EXPECT_NEAR(flashes[static_cast<std::size_t>(i)], time, count * tick / 2) << i;
        const int place =
            static_cast<int>(std::lround(flashes[static_cast<std::size_t>(i)] * soundRate));
        const int click = movie.loudestBetween(place - soundRate / 10, place + soundRate / 10);
        furthest = std::max(furthest, std::abs(click - place));
        cursor += durationOf(i);
    }
    EXPECT_LE(furthest, 1) << "samples";
    EXPECT_NEAR(movie.picture.duration, cursor, count * tick / 2);
    EXPECT_NEAR(movie.sound.duration, cursor, count * tick / 2 + 1.0 / soundRate);
}

TEST_F(Concatenate, IsSilentWhereASegmentHasNoSound)
{
    add(FilmedSegment::steady(0.7, 10, 100));
    add(clicking(0.6, {24'000}));
    add(FilmedSegment::steady(0.9, 10, 100));
    add(clicking(0.5, {12'000}));
    add(FilmedSegment::steady(0.8, 10, 100));
    const PlayedMovie movie = joined();
    EXPECT_NEAR(movie.picture.duration, 3.5, tick);
    EXPECT_NEAR(movie.sound.duration, 2.7, 1.0 / soundRate)
        << "where the last sound's segment ends";
    EXPECT_NEAR(movie.loudestBetween(0, 80'000), 0.7 * soundRate + 24'000, 1);
    EXPECT_NEAR(movie.loudestBetween(80'000, 200'000), 2.2 * soundRate + 12'000, 1);
    EXPECT_LT(loudest(movie, 0, 1.1), 0.01);
    EXPECT_LT(loudest(movie, 1.3, 2.35), 0.01);
}

TEST_F(Concatenate, MakesASegmentAsLongAsTheLongerOfItsTracks)
{
    const std::string longSound = m_folder / "long.mov";
    Videos::make({"-f", "lavfi", "-i", "color=gray:s=64x48:r=10:d=0.5", "-f", "lavfi", "-i",
                  "sine=r=48000:d=1", "-c:a", "pcm_s16le", "-bf", "0", longSound});
    m_segments.append(QString::fromStdString(longSound));
    FilmedSegment second = clicking(0.5, {12'000});
    second.frames.front().grey = 200;
    add(second);
    const PlayedMovie movie = joined();
    EXPECT_NEAR(movie.picture.duration, 1.5, tick);
    ASSERT_EQ(movie.frames.size(), 10U);
    EXPECT_NEAR(movie.frames[5].time, 1, tick);
    EXPECT_NEAR(movie.frames[5].grey, 200, 1);
    EXPECT_NEAR(movie.loudestBetween(49'000, 72'000), 60'000, 1);
    EXPECT_NEAR(movie.sound.duration, 1.5, 1.0 / soundRate);
}

TEST_F(Concatenate, FitsPicturesIntoTheFirstSegmentsSize)
{
    FilmedSegment segment = FilmedSegment::steady(0.2, 10, 100);
    add(segment);
    segment.width = 128;
    segment.height = 96;
    segment.frames[0].grey = segment.frames[1].grey = 150;
    add(segment);
    segment.width = 32; // half as wide as it would have to be
    add(segment);
    segment.width = 256;
    add(segment);
    const PlayedMovie movie = joined();
    EXPECT_EQ(movie.width, 64);
    EXPECT_EQ(movie.height, 48);
    ASSERT_EQ(movie.frames.size(), 8U);
    expectGreys(movie, {100, 100, 150, 150, 150, 150, 150, 150});
    EXPECT_NEAR(movie.frames[2].edgeGrey, 150, 1);
    EXPECT_NEAR(movie.frames[2].topGrey, 150, 1);
    EXPECT_NEAR(movie.frames[4].edgeGrey, 16, 1) << "black beside it";
    EXPECT_NEAR(movie.frames[4].topGrey, 150, 1);
    EXPECT_NEAR(movie.frames[6].edgeGrey, 150, 1);
    EXPECT_NEAR(movie.frames[6].topGrey, 16, 1) << "black above it";
}

TEST_F(Concatenate, TakesPicturesOfAnyKind)
{
    add(FilmedSegment::steady(0.2, 10, 126));
    for (const char* const format : {"yuvj420p", "yuv444p", "yuv420p10le"}) {
        const std::string path = m_folder / (std::string(format) + ".mov");
        Videos::make({"-f", "lavfi", "-i", "color=0x808080:s=64x48:r=10:d=0.2", "-pix_fmt", format,
                      "-crf", "4", path});
        m_segments.append(QString::fromStdString(path));
    }
    expectGreys(joined(), std::vector(8, 126));
    EXPECT_EQ(PlayedMovie::packetsOf(m_target).colours, "tv bt709 bt709 bt709");
}

TEST_F(Concatenate, IsTurnedAsTheFirstSegmentIs)
{
    const std::string bytes = FilmedSegment::steady(0.2, 10, 80).bytes();
    add(Videos::withMatrix(bytes, 0, 1, -1, 0));
    add(bytes);
    EXPECT_NEAR(joined().turn, -90, 0.1);
}

TEST_F(Concatenate, LeavesOutWhatCannotBePlayed)
{
    const FilmedSegment good = clicking(0.5, {12'000});
    const std::string bytes = good.bytes();
    add("");
    add(good);
    add(bytes.substr(0, bytes.find("moof") - 4));
    m_segments.append(QString::fromStdString(m_folder / "missing"));
    add(good);
    const FilmedSegment film = FilmedSegment::steady(3, 10, 80);
    const std::string broken = film.bytes();
    add(broken.substr(0, broken.rfind("moof") + 20)); // the last half second is lost
    add("This is no movie.");
    add(FilmedSegment::withoutFirstFragment(FilmedSegment::steady(0.9, 10, 80).bytes()));
    const PlayedMovie movie = joined();
    EXPECT_EQ(movie.frames.size(), 5U + 5U + 25U);
    EXPECT_NEAR(movie.picture.duration, 0.5 + 0.5 + 2.5, 3 * tick);
    EXPECT_NEAR(movie.loudestBetween(24'000, 48'000), 36'000, 1);
}

TEST_F(Concatenate, ShowsASegmentsFirstPictureFromItsBeginning)
{
    add(FilmedSegment::withoutFirstFragment(FilmedSegment::steady(2.5, 10, 90).bytes()));
    const PlayedMovie movie = joined();
    ASSERT_EQ(movie.frames.size(), 15U);
    EXPECT_EQ(movie.frames[0].time, 0);
    EXPECT_NEAR(movie.frames[1].time, 1.1, tick);
    EXPECT_NEAR(movie.picture.duration, 2.5, tick);
    expectGreys(movie, std::vector(15, 90));
}

TEST_F(Concatenate, CutsASegmentWhoseLastPicturesAreBrokenOff)
{
    const std::string whole = FilmedSegment::steady(3, 10, 80).bytes();
    const std::size_t data = whole.rfind("mdat");
    add(whole.substr(0, data + (whole.size() - data) / 2));
    add(FilmedSegment::steady(0.5, 10, 200));
    const PlayedMovie movie = joined();
    const auto second = std::find_if(movie.frames.begin(), movie.frames.end(),
                                     [](const auto& frame) { return frame.grey > 150; });
    ASSERT_NE(second, movie.frames.end());
    const auto shown = second - movie.frames.begin();
    EXPECT_GT(shown, 25);
    EXPECT_LT(shown, 30);
    EXPECT_NEAR(second->time, static_cast<double>(shown) / 10, tick);
}

TEST_F(Concatenate, OfNothingIsAFailureThatLeavesNothing)
{
    EXPECT_THAT(join().reason, HasSubstr("no picture in any segment"));
    add("");
    m_segments.append(QString::fromStdString(m_folder / "missing"));
    writeFile(m_target, "old");
    EXPECT_EQ(join().end, MovieExport::End::failed);
    EXPECT_EQ(contentOf(m_target), "old") << "nothing was there to take its place";
    add(FilmedSegment::steady(0.2, 10, 80));
    EXPECT_EQ(joined().frames.size(), 2U);
    EXPECT_THAT(m_folder.names(), ElementsAre("film.mp4", "segment0", "segment2"));
}
