#include "Media/Picture.h"

#include "support/PeakMemory.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/PngFile.h"

#include <QBuffer>
#include <QImageReader>

#include <gtest/gtest.h>

#include <sys/stat.h>

// The test program fails on anything that Qt warns about meanwhile; nor may a library write.

namespace {

constexpr long mebibyte = 1L << 20;

class HostilePicture : public testing::Test {
protected:
    void SetUp() override { testing::internal::CaptureStderr(); }
    void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }

    void expectRefused(const std::string& path, const std::string& reason) const
    {
        const QString name = QString::fromStdString(path);
        const PeakMemory memory;
        const auto info = Picture::info(name);
        ASSERT_FALSE(info);
        EXPECT_NE(info.failure().message.find(reason), std::string::npos) << info.failure().message;
        expectUnreadable(path);
        EXPECT_LT(memory.growth(), 16 * mebibyte);
    }

    static void expectUnreadable(const std::string& path)
    {
        EXPECT_FALSE(Picture::thumbnail(QString::fromStdString(path), {100, 50}));
        EXPECT_FALSE(Picture::load(QString::fromStdString(path)));
    }

    std::string file(const std::string& content) const
    {
        const std::string path = m_folder / "picture.png";
        writeFile(path, content);
        return path;
    }

    TemporaryFolder m_folder;
};

std::string encoded(const char* format)
{
    QImage image(64, 64, QImage::Format_RGB32);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x)
            image.setPixel(x, y, qRgb(x * 37 % 256, y * 91 % 256, (x ^ y) * 4));
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format));
    return buffer.data().toStdString();
}

} // namespace

TEST_F(HostilePicture, ThatIsNoFile)
{
    expectRefused(m_folder / "missing.png", "No such file");
    expectRefused(m_folder.path(), "not a regular file");
    expectRefused("/dev/zero", "not a regular file");
    const std::string pipe = m_folder / "pipe.png";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    expectRefused(pipe, "not a regular file"); // nobody ever writes to it
}

TEST_F(HostilePicture, ThatIsSomethingElse)
{
    expectRefused(file({}), "no picture");
    expectRefused(file("This is text.\n"), "no picture");
    expectRefused(file("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"),
                  "no picture");
    expectRefused(file("%PDF-1.7\n%\xe2\xe3\xcf\xd3\n"), "no picture");
    expectRefused(file("/* XPM */\nstatic char * a[] = {\"1 1 1 1\",\"a c red\",\"a\"};"),
                  "no picture");
    expectRefused(file("P6\n1 1\n255\nabc"), "no picture");
}

TEST_F(HostilePicture, ThatClaimsToBeHuge)
{
    expectRefused(file(PngFile{.width = 100'000, .height = 100'000, .row = "x"}.bytes()),
                  "too large");
    expectRefused(file(PngFile{.width = 60'000, .height = 60'000, .row = "x"}.bytes()),
                  "too large");
    expectRefused(file(PngFile{.width = 0xffff'ffff, .height = 1, .row = "x"}.bytes()), "broken");
    expectRefused(file(PngFile{.width = 0, .height = 1, .row = "x"}.bytes()), "broken");
    expectRefused(file(PngFile{.width = 1, .height = 70'000, .row = "x"}.bytes()), "too large");
    std::string jpeg = encoded("jpeg");
    const std::size_t frame = jpeg.find("\xff\xc0");
    ASSERT_NE(frame, std::string::npos);
    jpeg.replace(frame + 5, 4, "\xff\xff\xff\xff");
    expectRefused(file(jpeg), "too large");
    std::string gif = "GIF89a\xff\xff\xff\xff" + std::string(100, '\0');
    expectRefused(file(gif), "broken");
}

TEST_F(HostilePicture, ThatIsFarLargerThanItsFile)
{
    // 126 million pixels, which Qt would not read, in some kilobytes.
    const PngFile bomb{.width = 14'000,
                       .height = 9'000,
                       .bitDepth = 1,
                       .colourType = 0,
                       .row = std::string(1'750, '\0'),
                       .rows = 9'000};
    const std::string path = file(bomb.bytes());
    const PeakMemory memory;
    const auto image = Picture::thumbnail(QString::fromStdString(path), {140, 90});
    ASSERT_TRUE(image) << image.failure().message;
    EXPECT_EQ(image->pixel(70, 45), qRgb(0, 0, 0));
    EXPECT_LT(memory.growth(), 16 * mebibyte);
}

TEST_F(HostilePicture, ThatIsBrokenOff)
{
    const std::string png =
        PngFile{.width = 100, .height = 1000, .row = std::string(300, '\x55'), .rows = 500}.bytes();
    expectUnreadable(file(png)); // half of its rows, else in order
    const std::string whole = encoded("png");
    for (std::size_t size = 0; size + 20 < whole.size(); size += 37)
        expectUnreadable(file(whole.substr(0, size)));
    const std::string header = encoded("jpeg").substr(0, 100);
    expectRefused(file(header), "broken");
}

TEST_F(HostilePicture, ThatIsDamagedAnywhere)
{
    // Whatever comes of it: no crash, no warning, no memory for what is not there.
    for (const char* format : {"png", "jpeg", "bmp"}) {
        const std::string whole = encoded(format);
        for (std::size_t at = 0; at < whole.size(); at += 1 + at / 20) {
            for (const char byte : {'\0', '\x7f', '\xff'}) {
                const PeakMemory memory;
                std::string damaged = whole;
                damaged[at] = byte;
                const QString path = QString::fromStdString(file(damaged));
                (void)Picture::info(path);
                (void)Picture::thumbnail(path, {20, 10});
                EXPECT_LT(memory.growth(), 140 * mebibyte) << format << " " << at;
            }
        }
    }
}
