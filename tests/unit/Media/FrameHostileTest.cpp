#include "Media/FrameReader.h"

#include "support/PeakMemory.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/PngFile.h"
#include "unit/Media/Videos.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include <sys/stat.h>

namespace {

class HostileVideo : public testing::Test {
protected:
    void SetUp() override { testing::internal::CaptureStderr(); }
    void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }

    static void expectRefused(const std::string& path, const std::string& reason)
    {
        const PeakMemory memory;
        const auto reader = FrameReader::open(QString::fromStdString(path));
        ASSERT_FALSE(reader) << path;
        EXPECT_NE(reader.failure().message.find(reason), std::string::npos)
            << reader.failure().message;
        EXPECT_LT(memory.growth(), 32L << 20);
    }

    std::string file(const std::string& content, const std::string& name = "video.mp4") const
    {
        writeFile(m_folder / name, content);
        return m_folder / name;
    }

    /// 60 frames, its index in front of them when it is quick to start.
    std::string video(const std::vector<std::string>& options) const
    {
        Videos::encode(file(Videos::greyFrames(60), "raw"), options, m_folder / "good.mp4");
        return contentOf(m_folder / "good.mp4");
    }

    static int lastFrameOf(FrameReader& reader)
    {
        const auto image = reader.frameAt(1000);
        return image ? Videos::numberOf(qGray(image->pixel(30, 20))) : -1;
    }

    TemporaryFolder m_folder;
};

/// Up to the first box of that kind, with its length.
std::string until(const std::string& bytes, const std::string& box)
{
    return bytes.substr(0, bytes.find(box) - 4);
}

} // namespace

TEST_F(HostileVideo, ThatIsNoFile)
{
    expectRefused(m_folder / "missing.mp4", "No such file");
    expectRefused(m_folder.path(), "not a regular file");
    expectRefused("/dev/zero", "not a regular file");
    const std::string pipe = m_folder / "pipe.mp4";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    expectRefused(pipe, "not a regular file");
}

TEST_F(HostileVideo, ThatIsSomethingElse)
{
    expectRefused(file({}), "cannot read");
    expectRefused(file("This is text.\n"), "cannot read");
    expectRefused(file(std::string(3 << 20, '\0')), "cannot read");
    expectRefused(file(PngFile{.row = "abc"}.bytes()), "cannot read");
}

TEST_F(HostileVideo, ThatNamesOtherFiles)
{
    video({});
    ASSERT_TRUE(FrameReader::open(QString::fromStdString(m_folder / "good.mp4")));
    const std::string playlist =
        "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:2,\ngood.mp4\n#EXT-X-ENDLIST\n";
    expectRefused(file(playlist), "cannot read");
    expectRefused(file("ffconcat version 1.0\nfile good.mp4\n"), "cannot read");
    expectRefused(file("v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nm=video 9 RTP/AVP 96\n"),
                  "cannot read");
}

TEST_F(HostileVideo, ThatHasNoMovingPicture)
{
    const std::string sound = m_folder / "sound.mp4";
    Videos::make({"-f", "lavfi", "-i", "sine=d=0.2", "-c:a", "aac", sound});
    expectRefused(sound, "no video");
    const std::string cover =
        file(PngFile{.width = 8, .height = 8, .row = std::string(24, 'x'), .rows = 8}.bytes(),
             "cover.png");
    const std::string covered = m_folder / "covered.mp4";
    Videos::make({"-i", sound, "-i", cover, "-map", "0", "-map", "1", "-c", "copy",
                  "-disposition:v:0", "attached_pic", covered});
    ASSERT_EQ(Videos::probed(covered, "codec_name"), "png") << "there is a cover";
    expectRefused(covered, "no video");
}

TEST_F(HostileVideo, ThatHasNoFrame)
{
    const std::string fragments = video({"-movflags", "empty_moov+frag_keyframe"});
    expectRefused(file(until(fragments, "moof")), "no frame");
    std::string noise = video({});
    const std::size_t media = noise.find("mdat") + 4;
    const std::size_t index = noise.find("moov") - 4;
    ASSERT_LT(media, index);
    noise.replace(media, index - media, std::string(index - media, '\x11'));
    expectRefused(file(noise), "no frame");
}

TEST_F(HostileVideo, ThatIsBrokenOff)
{
    const std::string plain = video({});
    expectRefused(file(plain.substr(0, plain.size() / 2)),
                  "cannot read"); // its index is at the end
    const std::string whole = video({"-movflags", "faststart", "-bf", "0"});
    const std::size_t media = whole.find("mdat");
    auto reader = FrameReader::open(
        QString::fromStdString(file(whole.substr(0, media + (whole.size() - media) / 2))));
    ASSERT_TRUE(reader) << reader.failure().message;
    EXPECT_GT(lastFrameOf(*reader), 0);
    EXPECT_LT(lastFrameOf(*reader), 59);
    // Boxes cut anywhere.
    for (std::size_t size = 1; size < media; size += 13)
        EXPECT_FALSE(FrameReader::open(QString::fromStdString(file(whole.substr(0, size)))));
}

TEST_F(HostileVideo, ThatShrinksWhileItIsRead)
{
    const std::string path = file(video({"-movflags", "faststart", "-bf", "0", "-g", "5"}));
    auto reader = FrameReader::open(QString::fromStdString(path));
    ASSERT_TRUE(reader);
    EXPECT_EQ(lastFrameOf(*reader), 59);
    std::filesystem::resize_file(path, 10);
    EXPECT_EQ(lastFrameOf(*reader), 59) << "it is still at hand";
    (void)reader->frameAt(0.5); // a failure or a frame, but an end
}

TEST_F(HostileVideo, ThatIsDamagedAnywhere)
{
    const std::string whole = video({"-movflags", "faststart", "-bf", "2"});
    for (std::size_t at = 0; at < whole.size(); at += 1 + at / 60) {
        const PeakMemory memory;
        std::string damaged = whole;
        damaged[at] = at % 2 ? '\xff' : '\x7f';
        auto reader = FrameReader::open(QString::fromStdString(file(damaged)));
        if (reader) {
            (void)reader->frameAt(1, {64, 64});
            (void)reader->frameAt(0.1, {64, 64});
        }
        EXPECT_LT(memory.growth(), 200L << 20) << at;
    }
}

TEST_F(HostileVideo, ThatIsFarLargerThanItsFile)
{
    const PngFile large{.width = 9000,
                        .height = 5000,
                        .bitDepth = 1,
                        .colourType = 0,
                        .row = std::string(1125, '\0'),
                        .rows = 5000};
    const std::string copied = m_folder / "copied.mov";
    Videos::make({"-i", file(large.bytes(), "large.png"), "-c", "copy", copied});
    expectRefused(copied, "cannot be decoded");
}

TEST_F(HostileVideo, ThatClaimsToHaveMillionsOfFrames)
{
    // Of a byte each, all in one chunk: boxes as ISO/IEC 14496-12, 8.6 and 8.7, has them.
    const std::string many = PngFile::number(80'000'000);
    std::string bytes = video({"-movflags", "faststart", "-bf", "0"});
    bytes.replace(bytes.find("stsz") + 8, 8, PngFile::number(1) + many);
    bytes.replace(bytes.find("stsc") + 16, 4, many);
    bytes.replace(bytes.find("stts") + 12, 4, many);
    const PeakMemory memory;
    EXPECT_FALSE(FrameReader::open(QString::fromStdString(file(bytes))));
    EXPECT_LT(memory.growth(), 400L << 20);
}

TEST_F(HostileVideo, TakesNoLongerThanItMay)
{
    const std::string path = file(video({}));
    FrameReaderLimits limits;
    limits.time = std::chrono::milliseconds(0);
    EXPECT_FALSE(FrameReader::open(QString::fromStdString(path), limits));
}

TEST_F(HostileVideo, EndsWhenItsOwnerSaysSo)
{
    const std::string path = file(video({}));
    const FrameReaderLimits limits;
    auto reader = FrameReader::open(QString::fromStdString(path), limits);
    ASSERT_TRUE(reader);
    std::thread owner([cancellation = limits.cancellation] { cancellation.cancel(); });
    owner.join();
    EXPECT_FALSE(reader->frameAt(0.5));
    EXPECT_FALSE(FrameReader::open(QString::fromStdString(path), limits));
}
