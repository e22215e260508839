#include "Media/MovieExport.h"

#include "support/TemporaryFolder.h"
#include "unit/Media/FilmedSegment.h"
#include "unit/Media/PlayedMovie.h"
#include "unit/Media/Videos.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <random>

#include <sys/stat.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

class Remux : public testing::Test {
protected:
    void SetUp() override { testing::internal::CaptureStderr(); }
    void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }

    static MovieExport::Outcome remux(const std::string& source, const std::string& destination)
    {
        return MovieExport::remux(QString::fromStdString(source),
                                  QString::fromStdString(destination));
    }

    void expectRemuxed(const std::string& source) const
    {
        const MovieExport::Outcome outcome = remux(source, m_target);
        ASSERT_TRUE(outcome.succeeded()) << outcome.reason;
        EXPECT_EQ(outcome.reason, "");
    }

    /// A second and a half of pictures, each with a grey of its own, with sound.
    static FilmedSegment filmed()
    {
        FilmedSegment segment;
        for (int i = 0; i < 30; ++i)
            segment.frames.push_back({i * i / 600.0, 40 + 5 * i}); // uneven
        segment.duration = 1.75;
        segment.hasSound = true;
        segment.clicks = {30'000, 70'000};
        return segment;
    }

    std::string file(const std::string& bytes, const std::string& name = "segment.mov") const
    {
        writeFile(m_folder / name, bytes);
        return m_folder / name;
    }

    TemporaryFolder m_folder;
    std::string m_target = m_folder / "film.mp4";
};

/// Whether `part` is where `whole` begins.
bool begins(const std::vector<PlayedMovie::Packet>& whole,
            const std::vector<PlayedMovie::Packet>& part)
{
    return part.size() <= whole.size() &&
           std::equal(part.begin(), part.end(), whole.begin(), [](const auto& a, const auto& b) {
               return std::tie(a.time, a.decodedTime, a.isKey, a.bytes) ==
                      std::tie(b.time, b.decodedTime, b.isKey, b.bytes);
           });
}

bool areSame(const PlayedMovie::Track& a, const PlayedMovie::Track& b)
{
    return a.packets.size() == b.packets.size() && begins(a.packets, b.packets);
}

} // namespace

TEST_F(Remux, CopiesEveryPacketAsItIs)
{
    const std::string source = file(filmed().bytes());
    expectRemuxed(source);
    const PlayedMovie before = PlayedMovie::of(source);
    const PlayedMovie after = PlayedMovie::of(m_target);
    ASSERT_EQ(after.picture.packets.size(), 30U);
    EXPECT_TRUE(areSame(before.picture, after.picture));
    ASSERT_GT(after.sound.packets.size(), 70U);
    EXPECT_TRUE(areSame(before.sound, after.sound));
    EXPECT_EQ(after.sound.codec, "aac");
    EXPECT_NEAR(after.picture.duration, 1.75, 1e-6);
    EXPECT_EQ(after.colours, before.colours);
    EXPECT_EQ(after.colours, "tv bt709 bt709 bt709");
    EXPECT_TRUE(after.hasIndexInFront);
    EXPECT_NEAR(after.loudestBetween(20'000, 40'000), 30'000, 2);
    EXPECT_NEAR(after.loudestBetween(60'000, 80'000), 70'000, 2);
    EXPECT_EQ(contentOf(m_target).find("moof"), std::string::npos);
    EXPECT_THAT(m_folder.names(), ElementsAre("film.mp4", "segment.mov"));
    struct stat status = {};
    ASSERT_EQ(stat(m_target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(Remux, HasRoomForALargeIndex)
{
    FilmedSegment segment;
    segment.width = segment.height = 16;
    for (int i = 0; i < 5000; ++i)
        segment.frames.push_back({i * 0.01 + (i % 7) * 0.001, 100}); // hardly two as long
    segment.duration = 50;
    expectRemuxed(file(segment.bytes()));
    const PlayedMovie movie = PlayedMovie::packetsOf(m_target);
    EXPECT_EQ(movie.picture.packets.size(), 5000U);
    EXPECT_TRUE(movie.hasIndexInFront);
}

TEST_F(Remux, WithoutSound)
{
    expectRemuxed(file(FilmedSegment::steady(0.5, 10, 90).bytes()));
    const PlayedMovie movie = PlayedMovie::of(m_target);
    EXPECT_EQ(movie.greys(), std::vector(5, 90));
    EXPECT_EQ(movie.sound.codec, "");
}

TEST_F(Remux, OfASourceThatIsBrokenOffAnywhereKeepsWhatIsThere)
{
    const std::string whole = filmed().bytes();
    const PlayedMovie all = PlayedMovie::packetsOf(file(whole));
    const std::size_t first = whole.find("moof");
    const std::size_t last = whole.rfind("moof");
    std::vector<std::size_t> ends{whole.size() - 1, last - 4, last + 3, whole.rfind("mdat") + 3,
                                  whole.rfind("mdat") - 5};
    std::mt19937 random(42);
    for (int i = 0; i < 60; ++i)
        ends.push_back(std::uniform_int_distribution<std::size_t>(1, whole.size() - 1)(random));
    for (const std::size_t end : ends) {
        SCOPED_TRACE(end);
        fs::remove(m_target);
        const MovieExport::Outcome outcome = remux(file(whole.substr(0, end)), m_target);
        if (!outcome.succeeded()) {
            EXPECT_LT(end, whole.find("moof", first + 1)) << outcome.reason;
            EXPECT_THAT(m_folder.names(), ElementsAre("segment.mov"));
            continue;
        }
        const PlayedMovie left = PlayedMovie::of(m_target);
        EXPECT_TRUE(begins(all.picture.packets, left.picture.packets));
        EXPECT_TRUE(begins(all.sound.packets, left.sound.packets));
        EXPECT_EQ(left.frames.size(), left.picture.packets.size());
        EXPECT_GT(left.picture.packets.size(), end >= last - 4 ? 20U : 0U);
        EXPECT_THAT(m_folder.names(), ElementsAre("film.mp4", "segment.mov"));
    }
}

TEST_F(Remux, BeginsWithAKeyFrameAndLeavesThatWhereItWas)
{
    const FilmedSegment segment = FilmedSegment::steady(2.5, 10, 90);
    expectRemuxed(file(FilmedSegment::withoutFirstFragment(segment.bytes())));
    const PlayedMovie movie = PlayedMovie::of(m_target);
    ASSERT_EQ(movie.frames.size(), 15U);
    EXPECT_TRUE(movie.picture.packets.front().isKey);
    EXPECT_NEAR(movie.frames.front().time, 1, 1e-5);
}

TEST_F(Remux, KeepsTurnColoursAndEditLists)
{
    // The sound begins before 0, the pictures are decoded before 0: both by edit lists.
    const std::string made = m_folder / "made.mov";
    Videos::make({"-f",
                  "lavfi",
                  "-i",
                  "testsrc2=s=64x48:r=30:d=1",
                  "-f",
                  "lavfi",
                  "-i",
                  "sine=r=48000:d=1",
                  "-bf",
                  "2",
                  "-pix_fmt",
                  "yuv420p",
                  "-color_primaries",
                  "smpte170m",
                  "-color_trc",
                  "smpte170m",
                  "-colorspace",
                  "smpte170m",
                  "-color_range",
                  "tv",
                  "-c:a",
                  "aac",
                  made});
    const std::string source = file(Videos::withMatrix(contentOf(made), 0, 1, -1, 0), "turned.mov");
    expectRemuxed(source);
    const PlayedMovie before = PlayedMovie::of(source);
    const PlayedMovie after = PlayedMovie::of(m_target);
    ASSERT_LT(before.sound.packets.front().time, 0);
    ASSERT_LT(before.picture.packets.front().decodedTime, 0);
    ASSERT_NEAR(std::abs(before.turn), 90, 0.1);
    EXPECT_EQ(after.turn, before.turn);
    EXPECT_EQ(after.colours, "tv smpte170m smpte170m smpte170m");
    EXPECT_TRUE(areSame(before.picture, after.picture));
    EXPECT_TRUE(areSame(before.sound, after.sound));
    EXPECT_EQ(after.samples, before.samples);
}

TEST_F(Remux, MakesAacOfSoundThatMp4CannotHold)
{
    // Silence, then from 0.25 s on a tone of one channel at another rate.
    const std::string source = m_folder / "pcm.mov";
    Videos::make({"-f", "lavfi", "-i", "testsrc2=s=64x48:r=10:d=1", "-f", "lavfi", "-i",
                  "aevalsrc=gte(t\\,0.25)*0.5*sin(2*PI*1000*t):s=44100:d=1", "-c:a", "pcm_s16le",
                  "-bf", "0", source});
    expectRemuxed(source);
    const PlayedMovie movie = PlayedMovie::of(m_target);
    EXPECT_EQ(movie.sound.codec, "aac");
    EXPECT_EQ(movie.soundRate, 48000);
    EXPECT_EQ(movie.picture.packets.size(), 10U);
    EXPECT_NEAR(movie.sound.duration, 1, 0.001);
    const auto onset = std::find_if(movie.samples.begin(), movie.samples.end(),
                                    [](float sample) { return std::abs(sample) > 0.2; });
    EXPECT_NEAR(static_cast<double>(onset - movie.samples.begin()) / 48000, 0.25, 0.001);
    EXPECT_NEAR(
        std::abs(movie.samples.at(static_cast<std::size_t>(movie.loudestBetween(20'000, 40'000)))),
        0.5, 0.03)
        << "one channel is as loud as it was";
    double difference = 0;
    for (std::size_t i = 0; i < movie.samples.size(); ++i)
        difference =
            std::max(difference, std::abs(double{movie.samples[i]} - movie.rightSamples[i]));
    EXPECT_LT(difference, 0.02) << "on both sides";
}

TEST_F(Remux, ReplacesWhatStandsThere)
{
    const std::string source = file(FilmedSegment::steady(0.5, 10, 90).bytes());
    writeFile(m_target, "old");
    expectRemuxed(source);
    EXPECT_EQ(PlayedMovie::of(m_target).frames.size(), 5U);
    writeFile(m_folder / "victim", "precious");
    fs::remove(m_target);
    fs::create_symlink(m_folder / "victim", m_target);
    expectRemuxed(source);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(m_target)));
    EXPECT_EQ(contentOf(m_folder / "victim"), "precious");
    EXPECT_THAT(m_folder.names(), ElementsAre("film.mp4", "segment.mov", "victim"));
}

TEST_F(Remux, OfWhatHasNoPictureIsAFailureThatLeavesNothing)
{
    const auto expectFailure = [&](const std::string& source, const std::string& reason) {
        const MovieExport::Outcome outcome = remux(source, m_target);
        EXPECT_EQ(outcome.end, MovieExport::End::failed);
        EXPECT_THAT(outcome.reason, HasSubstr(reason));
        EXPECT_FALSE(fs::exists(m_target));
    };
    expectFailure(m_folder / "missing.mov", "No such file");
    expectFailure(m_folder.path(), "not a regular file");
    expectFailure(file(""), "cannot read");
    expectFailure(file("This is no movie.\n"), "cannot read");
    const std::string whole = filmed().bytes();
    expectFailure(file(whole.substr(0, whole.find("moof") - 4)), "no picture in");
    const std::string sound = m_folder / "sound.mov";
    Videos::make({"-f", "lavfi", "-i", "sine=d=0.2", "-c:a", "aac", sound});
    expectFailure(sound, "no picture in");
    const std::string unfit = m_folder / "unfit.mov";
    Videos::make({"-f", "lavfi", "-i", "testsrc2=s=64x48:d=0.1", "-c:v", "prores", unfit});
    expectFailure(unfit, "an MP4 cannot hold");
    EXPECT_THAT(m_folder.names(), ElementsAre("segment.mov", "sound.mov", "unfit.mov"));
}

TEST_F(Remux, ToAPlaceThatCannotBeWrittenIsAFailureThatLeavesNothing)
{
    const std::string source = file(FilmedSegment::steady(0.5, 10, 90).bytes());
    EXPECT_THAT(remux(source, m_folder / "no/film.mp4").reason, HasSubstr("No such file"));
    fs::create_directory(m_folder / "folder.mp4");
    writeFile(m_folder / "folder.mp4/kept", "kept");
    EXPECT_THAT(remux(source, m_folder / "folder.mp4").reason, HasSubstr("folder.mp4"));
    EXPECT_THAT(m_folder.names(), ElementsAre("folder.mp4", "segment.mov"));
    EXPECT_EQ(contentOf(m_folder / "folder.mp4/kept"), "kept");
}
