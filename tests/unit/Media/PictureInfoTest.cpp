#include "Media/Picture.h"

#include "support/TemporaryFolder.h"
#include "unit/Media/PngFile.h"

#include <QBuffer>

#include <gtest/gtest.h>

namespace {

class PictureInfo : public testing::Test {
protected:
    Picture::Info infoOf(const std::string& content) const
    {
        writeFile(m_folder / "picture.png", content);
        const auto info = Picture::info(QString::fromStdString(m_folder / "picture.png"));
        if (!info) {
            ADD_FAILURE() << info.failure().message;
            return {};
        }
        return *info;
    }

    TemporaryFolder m_folder;
};

std::string png(const std::string& chunks)
{
    return PngFile{
        .width = 30, .height = 20, .chunks = chunks, .row = std::string(90, 'x'), .rows = 20}
        .bytes();
}

/// A JPEG of 30 x 20 pixels as Qt writes it, with its JFIF density overwritten and `segments`
/// behind.
std::string jpeg(char unit, int density, const std::string& segments = {})
{
    QImage image(30, 20, QImage::Format_RGB32);
    image.fill(Qt::red);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, "jpeg"));
    const std::string bytes = buffer.data().toStdString();
    EXPECT_EQ(bytes.substr(6, 4), "JFIF");
    return bytes.substr(0, 13) + unit +
           PngFile::number(static_cast<std::uint32_t>(density << 16 | density)) +
           bytes.substr(18, 2) + segments + bytes.substr(20); // behind the first segment
}

std::string exifSegment(const std::string& block)
{
    const std::string content = std::string("Exif\0\0", 6) + block;
    return "\xff\xe1" + PngFile::number(static_cast<std::uint32_t>(content.size() + 2)).substr(2) +
           content;
}

} // namespace

TEST_F(PictureInfo, OfAPngWithoutDensity)
{
    const Picture::Info info = infoOf(png({}));
    EXPECT_EQ(info.pixels, QSize(30, 20));
    EXPECT_EQ(info.density, 1);
    EXPECT_EQ(info.points(), QSizeF(30, 20));
}

TEST_F(PictureInfo, OfAPngWithDensity)
{
    // 144 dots an inch, as the capture tool writes it.
    EXPECT_EQ(infoOf(png(PngFile::density(5669, 1))).density, 2);
    EXPECT_EQ(infoOf(png(PngFile::density(5669, 1))).points(), QSizeF(15, 10));
    EXPECT_EQ(infoOf(png(PngFile::density(5669, 0))).density, 1) << "only the shape of a pixel";
    EXPECT_EQ(infoOf(png(PngFile::chunk("tEXt", "k\0v") + PngFile::density(5669, 1))).density, 2);
}

TEST_F(PictureInfo, OfAPngThatIsTurned)
{
    EXPECT_EQ(infoOf(png(PngFile::chunk("eXIf", exifBlock(6)))).pixels, QSize(20, 30));
    EXPECT_EQ(infoOf(png(PngFile::chunk("eXIf", exifBlock(3)))).pixels, QSize(30, 20));
}

TEST_F(PictureInfo, OfAJpeg)
{
    EXPECT_EQ(infoOf(jpeg(0, 1)).pixels, QSize(30, 20));
    EXPECT_EQ(infoOf(jpeg(0, 1)).density, 1);
    EXPECT_EQ(infoOf(jpeg(1, 144)).density, 2) << "in inches";
    EXPECT_EQ(infoOf(jpeg(2, 85)).density, 3) << "in centimetres";
}

TEST_F(PictureInfo, OfAJpegWithExif)
{
    const std::string turned = exifSegment(exifBlock(8, 216));
    EXPECT_EQ(infoOf(jpeg(0, 1, turned)).pixels, QSize(20, 30));
    EXPECT_EQ(infoOf(jpeg(0, 1, turned)).density, 3);
    EXPECT_EQ(infoOf(jpeg(1, 144, turned)).density, 2) << "JFIF's own goes first";
}

TEST_F(PictureInfo, OfAJpegWithBrokenExif)
{
    const std::string block = exifBlock(6, 216);
    for (std::size_t size = 0; size < block.size(); ++size) {
        const auto info = infoOf(jpeg(1, 144, exifSegment(block.substr(0, size))));
        EXPECT_TRUE(info.pixels == QSize(30, 20) || info.pixels == QSize(20, 30));
    }
    const std::string endless =
        block.substr(0, 8) + "\xff\xff" + block.substr(10); // so many entries
    EXPECT_EQ(infoOf(jpeg(1, 144, exifSegment(endless))).pixels, QSize(20, 30));
}

TEST_F(PictureInfo, OfOtherFormats)
{
    QImage image(30, 20, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QString path = QString::fromStdString(m_folder / "misnamed.png");
    ASSERT_TRUE(image.save(path, "bmp"));
    const auto info = Picture::info(path);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->pixels, QSize(30, 20));
    EXPECT_EQ(info->density, 1);
}
