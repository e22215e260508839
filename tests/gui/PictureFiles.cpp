#include "gui/PictureFiles.h"

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/PngFile.h"

#include <QBuffer>

#include <gtest/gtest.h>

namespace PictureFiles {

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

std::string png(int bitDepth, int colourType, const std::string& pixel, const std::string& chunks)
{
    return PngFile{.width = side,
                   .height = side,
                   .bitDepth = bitDepth,
                   .colourType = colourType,
                   .chunks = chunks,
                   .row = repeated(pixel, bitDepth == 1 ? side / 8 : side),
                   .rows = side}
        .bytes();
}

std::string paletteChunks(const std::string& alphas)
{
    const std::string colours =
        PngFile::chunk("PLTE", {'\xff', '\xff', '\xff', '\x10', '\x20', '\x30'});
    return alphas.empty() ? colours : colours + PngFile::chunk("tRNS", alphas);
}

std::string encoded(QImage image, const char* format)
{
    constexpr int dotsPerMetre = 2835; // Qt would say 96 an inch
    image.setDotsPerMeterX(dotsPerMetre);
    image.setDotsPerMeterY(dotsPerMetre);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format, 95));
    return buffer.data().toStdString();
}

QImage plainImage(const QColor& colour)
{
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

std::string converted(std::vector<std::string> words, const std::string& kind)
{
    const TemporaryFolder folder;
    words.insert(words.begin(), {"convert", "-size", "40x40"});
    words.push_back(kind + (folder / "picture"));
    const Outcome outcome = run({words, {}});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    return contentOf(folder / "picture");
}

std::string profileChunk(const QByteArray& profile)
{
    // qCompress puts a length in front.
    return PngFile::chunk("iCCP", std::string("secret profile\0\0", 16) +
                                      qCompress(profile).mid(4).toStdString());
}

QByteArray linearGreyProfile()
{
    const auto number = [](std::uint32_t value) { return PngFile::number(value); };
    const std::string white = number(0xf6d6) + number(0x10000) + number(0xd32d); // of D50
    const std::string tags =
        number(2) + "wtpt" + number(156) + number(20) + "kTRC" + number(176) + number(16);
    const std::string whitePoint = "XYZ " + number(0) + white;
    const std::string curve = "curv" + number(0) + number(1) + std::string("\1\0\0\0", 4); // 1.0
    const std::string header = number(192) + number(0) + number(0x02400000) + "mntrGRAYXYZ " +
                               std::string(12, '\0') + "acsp" + std::string(28, '\0') + white +
                               std::string(48, '\0');
    return QByteArray::fromStdString(header + tags + whitePoint + curve);
}

std::string withProfile(QColorSpace::NamedColorSpace space, const char* format)
{
    QImage image = plainImage(QColor(100, 150, 120));
    image.setColorSpace(space);
    return encoded(image, format);
}

std::string withSegments(const std::string& jpeg, const std::string& segments)
{
    return jpeg.substr(0, 20) + segments + jpeg.substr(20);
}

std::string segment(const char* marker, const std::string& content)
{
    return marker + PngFile::number(static_cast<std::uint32_t>(content.size() + 2)).substr(2) +
           content;
}

std::string exifSegment(const std::string& block)
{
    return segment("\xff\xe1", std::string("Exif\0\0", 6) + block);
}

std::string jpegAtTwoPixelsAPoint()
{
    std::string jpeg = encoded(plainImage(), "jpeg");
    jpeg[13] = '\0'; // the unit of JFIF's own density
    return withSegments(jpeg, exifSegment(exifBlock(1, 144)));
}

std::string animatedPng()
{
    const auto frame = [](std::uint32_t sequence) {
        return PngFile::chunk("fcTL", PngFile::number(sequence) + PngFile::number(side) +
                                          PngFile::number(side) + std::string(8, '\0') +
                                          std::string("\0\1\0\x0a\0\0", 6));
    };
    std::string bytes =
        png(8, 2, "\x10\x20\x30",
            PngFile::chunk("acTL", PngFile::number(2) + std::string(4, '\0')) + frame(0));
    const std::string other = png(8, 2, std::string("\0\xff\0", 3));
    const std::size_t start = other.find("IDAT") + 4;
    const std::string pixels = other.substr(start, other.size() - start - 12 - 4);
    return bytes.insert(bytes.size() - 12,
                        frame(1) + PngFile::chunk("fdAT", PngFile::number(2) + pixels));
}

std::string cutOffJpeg()
{
    QImage image = plainImage();
    for (int y = side / 2; y < side; ++y) {
        for (int x = 0; x < side; ++x)
            image.setPixel(x, y, qRgb(x * 97 % 256, y * 61 % 256, (x * y) % 256));
    }
    const std::string whole = encoded(image, "jpeg");
    return whole.substr(0, whole.size() - 400);
}

} // namespace PictureFiles
