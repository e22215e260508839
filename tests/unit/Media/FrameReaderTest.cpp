#include "Media/FrameReader.h"

#include "support/TemporaryFolder.h"
#include "unit/Media/Videos.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>

namespace {

using Words = std::vector<std::string>;

class FrameTimes : public testing::Test {
protected:
    FrameReader encoded(int frames, const Words& options, const std::string& name = "video.mp4")
    {
        writeFile(m_folder / "raw", Videos::greyFrames(frames));
        Videos::encode(m_folder / "raw", options, m_folder / name);
        return opened(m_folder / name);
    }

    static FrameReader opened(const std::string& path)
    {
        auto reader = FrameReader::open(QString::fromStdString(path));
        if (!reader)
            throw std::runtime_error(reader.failure().message);
        return std::move(*reader);
    }

    static int frameAt(FrameReader& reader, double seconds)
    {
        const auto image = reader.frameAt(seconds);
        if (!image) {
            ADD_FAILURE() << image.failure().message;
            return -1;
        }
        return Videos::numberOf(qGray(image->pixel(30, 20)));
    }

    /// Forwards, backwards, and with leaps: every frame at its beginning, and just before the next.
    static void expectEveryFrame(FrameReader& reader, int count)
    {
        std::vector<int> order;
        for (int i = 0; i < count; ++i)
            order.push_back(i);
        for (int i = count; i-- > 0;)
            order.push_back(i);
        for (int i = 0; i < count; ++i)
            order.push_back(i * 23 % count);
        for (const int number : order) {
            const double rate = Videos::frameRate;
            ASSERT_EQ(frameAt(reader, number / rate), number);
            ASSERT_EQ(frameAt(reader, (number + 0.99) / rate), number);
        }
    }

    TemporaryFolder m_folder;
};

/// How many bytes this process has read so far. Linux.
long bytesRead()
{
    std::ifstream counters("/proc/self/io");
    std::string name;
    long count = 0;
    counters >> name >> count;
    EXPECT_EQ(name, "rchar:");
    return count;
}

} // namespace

TEST_F(FrameTimes, AreThoseAtWhichEachFrameShows)
{
    FrameReader reader = encoded(30, {"-bf", "0"});
    EXPECT_EQ(reader.size(), QSize(64, 48));
    ASSERT_TRUE(reader.duration());
    EXPECT_NEAR(*reader.duration(), 1, 1e-6);
    EXPECT_EQ(frameAt(reader, 0), 0);
    EXPECT_EQ(frameAt(reader, 0.1), 3);
    EXPECT_EQ(frameAt(reader, 0.0999), 2);
    EXPECT_EQ(frameAt(reader, -5), 0) << "the first before it";
    EXPECT_EQ(frameAt(reader, 1), 29) << "the last at the end";
    EXPECT_EQ(frameAt(reader, 1e300), 29);
    EXPECT_EQ(frameAt(reader, 0.5), 15) << "back from past the end";
    EXPECT_EQ(frameAt(reader, std::nan("")), 0);
    expectEveryFrame(reader, 30);
}

TEST_F(FrameTimes, HoldWithFramesThatRefersToLaterOnes)
{
    FrameReader reader =
        encoded(60, {"-bf", "3", "-x264-params", "b-adapt=0:keyint=12:scenecut=0"});
    ASSERT_NE(Videos::probed(m_folder / "video.mp4", "has_b_frames"), "0");
    expectEveryFrame(reader, 60);
}

TEST_F(FrameTimes, HoldWhereFramesReachAcrossKeyFrames)
{
    FrameReader reader =
        encoded(60, {"-bf", "3", "-x264-params", "b-adapt=0:keyint=12:scenecut=0:open-gop=1"});
    expectEveryFrame(reader, 60);
}

TEST_F(FrameTimes, HoldInAFileOfFragments)
{
    FrameReader reader = encoded(
        60, {"-bf", "0", "-g", "15", "-movflags", "frag_keyframe+empty_moov+default_base_moof"},
        "f.mov");
    ASSERT_TRUE(reader.duration());
    EXPECT_NEAR(*reader.duration(), 2, 1e-6);
    expectEveryFrame(reader, 60);
}

TEST_F(FrameTimes, HoldInMatroska)
{
    FrameReader reader = encoded(60, {"-bf", "0", "-g", "15", "-f", "matroska"}, "misnamed.mp4");
    EXPECT_NEAR(reader.duration().value_or(0), 2, 0.002);
    // Its times are whole milliseconds.
    EXPECT_EQ(frameAt(reader, 1.5011), 45);
    EXPECT_EQ(frameAt(reader, 0.1001), 3);
    EXPECT_EQ(frameAt(reader, 9), 59);
}

TEST_F(FrameTimes, MayBeFarApartAndUneven)
{
    for (const char* const heldBack : {"0", "2"}) {
        SCOPED_TRACE(heldBack);
        // Frame n shows from n * n / 10 s on.
        FrameReader reader =
            encoded(10, {"-vf", "settb=1/1000,setpts=N*N*100", "-vsync", "passthrough",
                         "-enc_time_base", "1/1000", "-bf", heldBack, "-g", "4"});
        for (const int number : {0, 1, 2, 5, 9, 8, 3, 0, 7}) {
            const double start = number * number / 10.0;
            EXPECT_EQ(frameAt(reader, start), number);
            EXPECT_EQ(frameAt(reader, start + 0.099), number);
            EXPECT_EQ(frameAt(reader, start - 0.001), std::max(0, number - 1));
        }
    }
}

TEST_F(FrameTimes, MayBeginLate)
{
    FrameReader reader = encoded(10, {"-vf", "setpts=PTS+2/TB", "-vsync", "passthrough"});
    EXPECT_EQ(frameAt(reader, 0.1), 0);
    EXPECT_EQ(frameAt(reader, 2.1), 3);
    EXPECT_EQ(frameAt(reader, 0.1), 0);
}

TEST_F(FrameTimes, OfASingleFrame)
{
    FrameReader reader = encoded(1, {});
    EXPECT_EQ(frameAt(reader, 0.1), 0);
    EXPECT_EQ(frameAt(reader, 0), 0);
    EXPECT_EQ(frameAt(reader, 9), 0);
}

TEST_F(FrameTimes, OfAReaderThatWasMoved)
{
    FrameReader first = encoded(10, {});
    FrameReader second = std::move(first);
    EXPECT_EQ(frameAt(second, 0.1), 3);
    first = std::move(second);
    EXPECT_EQ(frameAt(first, 0.2), 6);
}

TEST_F(FrameTimes, AreReadOnceInOrderAndSkippedOtherwise)
{
    const std::string path = m_folder / "noise.mp4";
    Videos::make({"-f", "lavfi", "-i", "nullsrc=s=320x240:r=30:d=2,noise=alls=100:allf=t", "-bf",
                  "0", "-g", "15", "-pix_fmt", "yuv420p", path});
    const auto size = static_cast<long>(std::filesystem::file_size(path));
    ASSERT_GT(size, 1 << 20);

    FrameReader inOrder = opened(path);
    const long before = bytesRead();
    for (int i = 0; i < 60; ++i)
        ASSERT_TRUE(inOrder.frameAt(i / 30.0, {32, 24}));
    EXPECT_LT(bytesRead() - before, size + size / 4);

    FrameReader leaping = opened(path);
    const long beforeLeap = bytesRead();
    ASSERT_TRUE(leaping.frameAt(1.6, {32, 24})); // three frames behind the last key frame
    EXPECT_LT(bytesRead() - beforeLeap, size / 4);
}
