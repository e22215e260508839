#include "Media/Picture.h"

#include "support/ChildProcess.h"
#include "support/PeakMemory.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/PngFile.h"

#include <QColorSpace>
#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>

namespace {

class PictureThumbnail : public testing::Test {
protected:
    QString path() const { return QString::fromStdString(m_folder / "picture"); }

    QImage thumbnailOf(QSize target) const { return checked(Picture::thumbnail(path(), target)); }
    QImage whole() const { return checked(Picture::load(path())); }

    QImage thumbnailOf(const PngFile& png, QSize target) const
    {
        writeFile(m_folder / "picture", png.bytes());
        return thumbnailOf(target);
    }

    QImage thumbnailOf(const QImage& image, QSize target, const char* format = "png") const
    {
        EXPECT_TRUE(image.save(path(), format));
        return thumbnailOf(target);
    }

    static QImage checked(const Result<QImage>& image)
    {
        if (!image) {
            ADD_FAILURE() << image.failure().message;
            return {};
        }
        const QImage::Format format = image->format();
        EXPECT_TRUE(format == QImage::Format_RGB32 ||
                    format == QImage::Format_ARGB32_Premultiplied);
        return *image;
    }

    TemporaryFolder m_folder;
};

/// Columns of 0, 1, 2 ... and rows of the same in green, of which means can be worked out.
QImage ramp(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(x, y, 7));
    }
    return image;
}

/// Red, green, blue and white quarters, from the top left clockwise.
QImage quarters(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    const int x = size.width() / 2;
    const int y = size.height() / 2;
    QPainter painter(&image);
    painter.fillRect(0, 0, x, y, Qt::red);
    painter.fillRect(x, 0, x, y, Qt::green);
    painter.fillRect(x, y, x, y, Qt::blue);
    painter.fillRect(0, y, x, y, Qt::white);
    return image;
}

void expectNear(QRgb pixel, QRgb wanted, int tolerance)
{
    EXPECT_NEAR(qRed(pixel), qRed(wanted), tolerance);
    EXPECT_NEAR(qGreen(pixel), qGreen(wanted), tolerance);
    EXPECT_NEAR(qBlue(pixel), qBlue(wanted), tolerance);
    EXPECT_NEAR(qAlpha(pixel), qAlpha(wanted), tolerance);
}

/// The corners of a picture of quarters, from the top left clockwise.
void expectCorners(const QImage& image, const std::array<QColor, 4>& wanted, int tolerance = 0)
{
    const int right = image.width() - 2;
    const int bottom = image.height() - 2;
    expectNear(image.pixel(1, 1), wanted[0].rgb(), tolerance);
    expectNear(image.pixel(right, 1), wanted[1].rgb(), tolerance);
    expectNear(image.pixel(right, bottom), wanted[2].rgb(), tolerance);
    expectNear(image.pixel(1, bottom), wanted[3].rgb(), tolerance);
}

} // namespace

TEST_F(PictureThumbnail, IsTheMeanOfWhatEachPixelCovers)
{
    const QImage image = thumbnailOf(ramp({200, 120}), {50, 30});
    ASSERT_EQ(image.size(), QSize(50, 30));
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 50; ++x) // 4k, 4k+1, 4k+2 and 4k+3 make 4k + 1.5, which is rounded
            ASSERT_EQ(image.pixel(x, y), qRgb(4 * x + 2, 4 * y + 2, 7)) << x << ", " << y;
    }
}

TEST_F(PictureThumbnail, SharesPixelsOutWhereEdgesFallBetweenThem)
{
    // A pixel covers 1.5 columns and rows: 0 and half of 1, then half of 1 and 2, then 3 and half
    // of 4.
    const QImage image = thumbnailOf(ramp({150, 120}), {100, 80});
    ASSERT_EQ(image.size(), QSize(100, 80));
    EXPECT_EQ(image.pixel(0, 0), qRgb(0, 0, 7));       // (0 + 1 / 2) / 1.5 = 0.33
    EXPECT_EQ(image.pixel(1, 1), qRgb(2, 2, 7));       // (1 / 2 + 2) / 1.5 = 1.67
    EXPECT_EQ(image.pixel(2, 2), qRgb(3, 3, 7));       // (3 + 4 / 2) / 1.5 = 3.33
    EXPECT_EQ(image.pixel(99, 79), qRgb(149, 119, 7)); // (148 / 2 + 149) / 1.5 = 148.67
}

TEST_F(PictureThumbnail, IsCutAroundTheCentre)
{
    // The target's shape takes 120 x 120 of it, from column 40.
    const QImage wide = thumbnailOf(ramp({200, 120}), {60, 60});
    ASSERT_EQ(wide.size(), QSize(60, 60));
    EXPECT_EQ(wide.pixel(0, 0), qRgb(41, 1, 7)); // 40.5 and 0.5 are rounded
    EXPECT_EQ(wide.pixel(59, 59), qRgb(159, 119, 7));
    const QImage tall = thumbnailOf(ramp({120, 200}), {60, 60});
    EXPECT_EQ(tall.pixel(0, 0), qRgb(1, 41, 7));
    EXPECT_EQ(tall.pixel(59, 59), qRgb(119, 159, 7));
}

TEST_F(PictureThumbnail, IsNeverEnlarged)
{
    const QImage narrow = thumbnailOf(ramp({40, 200}), {100, 50});
    ASSERT_EQ(narrow.size(), QSize(40, 20));
    EXPECT_EQ(narrow.pixel(0, 0), qRgb(0, 90, 7));
    EXPECT_EQ(narrow.pixel(39, 19), qRgb(39, 109, 7));
    EXPECT_EQ(thumbnailOf(ramp({1, 1}), {100, 48}).size(), QSize(1, 1));
    EXPECT_EQ(thumbnailOf(ramp({1, 200}), {100, 48}).size(), QSize(1, 1));
    EXPECT_EQ(thumbnailOf(ramp({200, 1}), {100, 48}).size(), QSize(2, 1));
}

TEST_F(PictureThumbnail, TakesTheSamePartOfAJpegAndOfABitmap)
{
    for (const char* format : {"jpeg", "bmp"}) {
        const QImage wide = thumbnailOf(quarters({400, 240}), {60, 60}, format);
        ASSERT_EQ(wide.size(), QSize(60, 60)) << format;
        expectCorners(wide, {Qt::red, Qt::green, Qt::blue, Qt::white}, 3);
        const QImage cut = thumbnailOf(ramp({200, 120}), {30, 30}, format);
        expectNear(cut.pixel(0, 15), qRgb(42, 62, 7), 4);
        expectNear(cut.pixel(29, 15), qRgb(158, 62, 7), 4);
    }
}

TEST_F(PictureThumbnail, IsUpright)
{
    const QImage stored = quarters({400, 240});
    ASSERT_TRUE(stored.save(path(), "png"));
    const std::string bytes = contentOf(m_folder / "picture");
    const QColor red = Qt::red, green = Qt::green, blue = Qt::blue, white = Qt::white;
    // What EXIF's eight numbers say about where the first row and the first column are.
    const std::array<std::array<QColor, 4>, 9> wanted{{{},
                                                       {red, green, blue, white},
                                                       {green, red, white, blue},
                                                       {blue, white, red, green},
                                                       {white, blue, green, red},
                                                       {red, white, blue, green},
                                                       {white, red, green, blue},
                                                       {blue, green, red, white},
                                                       {green, blue, white, red}}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        std::string turned = bytes;
        writeFile(m_folder / "picture",
                  turned.insert(33, PngFile::chunk("eXIf", exifBlock(orientation))));
        const bool isTurned = orientation > 4;
        const QImage image = thumbnailOf({50, 20});
        EXPECT_EQ(image.size(), QSize(50, 20));
        expectCorners(image, wanted.at(static_cast<std::size_t>(orientation)));
        EXPECT_EQ(whole().size(), isTurned ? QSize(240, 400) : QSize(400, 240));
        expectCorners(whole(), wanted.at(static_cast<std::size_t>(orientation)));
    }
}

TEST_F(PictureThumbnail, PremultipliesBeforeItMixes)
{
    QImage image(40, 40, QImage::Format_ARGB32);
    for (int x = 0; x < 40; ++x) {
        for (int y = 0; y < 40; ++y)
            image.setPixel(x, y, x % 2 ? qRgba(0, 255, 0, 0) : qRgba(200, 0, 0, 255));
    }
    const QImage half = thumbnailOf(image, {20, 20});
    EXPECT_EQ(half.format(), QImage::Format_ARGB32_Premultiplied);
    // The clear pixel's green is nowhere. Bits, since pixel() would divide by alpha.
    const auto* const bits = reinterpret_cast<const QRgb*>(half.constScanLine(3));
    expectNear(bits[3], qRgba(100, 0, 0, 128), 1);
}

TEST_F(PictureThumbnail, KnowsEveryKindOfPng)
{
    const std::string palette = PngFile::chunk("PLTE", {'\0', '\0', '\0', '\x10', '\x20', '\x30'});
    const QRgb colour = qRgb(0x10, 0x20, 0x30);
    const auto check = [&](const PngFile& png, QRgb wanted) {
        EXPECT_EQ(thumbnailOf(png, {2, 2}).pixel(1, 1), wanted);
        EXPECT_EQ(whole().pixel(1, 1), wanted);
        EXPECT_EQ(whole().size(), QSize(8, 8));
    };
    check({8, 8, 1, 3, palette, "\xff", 8}, colour);
    check({8, 8, 8, 3, palette, std::string(8, '\1'), 8}, colour);
    check({8, 8, 1, 0, {}, "\xff", 8}, qRgb(255, 255, 255));
    check({8, 8, 8, 0, {}, std::string(8, '\x40'), 8}, qRgb(0x40, 0x40, 0x40));
    check({8, 8, 16, 0, {}, std::string(16, '\x40'), 8}, qRgb(0x40, 0x40, 0x40));
    check({8, 8, 16, 2, {}, std::string(48, '\x40'), 8}, qRgb(0x40, 0x40, 0x40));
    check({8, 8, 8, 4, {}, std::string(16, '\xff'), 8}, qRgb(255, 255, 255));
    const std::string clear = PngFile::chunk("tRNS", {'\xff', '\0'});
    check({8, 8, 8, 3, palette + clear, std::string(8, '\1'), 8}, qRgba(0, 0, 0, 0));
}

TEST_F(PictureThumbnail, KnowsWhatOtherProgramsWrite)
{
    const auto convert = [this](std::vector<std::string> words, const std::string& file) {
        words.insert(words.begin(), {"convert", "-size", "64x64"});
        words.push_back(file + (m_folder / "picture"));
        SCOPED_TRACE(testing::PrintToString(words));
        const Outcome outcome = run({words, {}});
        ASSERT_EQ(outcome.status, 0) << outcome.error;
        expectNear(thumbnailOf({16, 16}).pixel(8, 8), qRgb(255, 0, 0), 4);
        expectNear(whole().pixel(8, 8), qRgb(255, 0, 0), 4);
    };
    convert({"xc:red", "xc:blue"}, "gif:"); // the first of two
    convert({"xc:red", "-interlace", "PNG"}, "png:");
    convert({"xc:red", "-interlace", "JPEG"}, "jpeg:");
    convert({"xc:red", "-colorspace", "CMYK"}, "jpeg:");
}

TEST_F(PictureThumbnail, CorrectsAGammaThatTheFileStates)
{
    // 0.5 of linear light is 188 in sRGB.
    const std::string linear = PngFile::chunk("gAMA", PngFile::number(100'000));
    const PngFile png{.width = 8,
                      .height = 8,
                      .colourType = 0,
                      .chunks = linear,
                      .row = std::string(8, '\x80'),
                      .rows = 8};
    expectNear(thumbnailOf(png, {2, 2}).pixel(1, 1), qRgb(188, 188, 188), 2);
}

TEST_F(PictureThumbnail, ConvertsAnEmbeddedProfile)
{
    QImage image(40, 40, QImage::Format_RGB32);
    image.fill(qRgb(100, 150, 120));
    image.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
    // Display P3 has the curve of sRGB and other primaries (SMPTE EG 432-1), so that the linear
    // values go through this matrix.
    const auto linear = [](double v) {
        return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    const auto curved = [](double v) {
        return qRound(255 * (v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055));
    };
    const double r = linear(100 / 255.0), g = linear(150 / 255.0), b = linear(120 / 255.0);
    const QRgb wanted = qRgb(curved(1.2249 * r - 0.2247 * g), curved(-0.0420 * r + 1.0419 * g),
                             curved(-0.0197 * r - 0.0786 * g + 1.0979 * b));
    ASSERT_LT(qRed(wanted), 90) << "it must differ from what is stored";
    for (const char* format : {"png", "jpeg"}) {
        expectNear(thumbnailOf(image, {8, 8}, format).pixel(4, 4), wanted, 3);
        expectNear(whole().pixel(4, 4), wanted, 3);
    }
}

TEST_F(PictureThumbnail, NeverHoldsTheWholePicture)
{
    const QSize screen(3840, 2160);
    const PngFile png{
        .width = 3840, .height = 2160, .row = std::string(3 * 3840, '\x33'), .rows = 2160};
    writeFile(m_folder / "picture", png.bytes());
    const PeakMemory memory;
    const QImage image = thumbnailOf({440, 248});
    EXPECT_EQ(image.pixel(100, 100), qRgb(0x33, 0x33, 0x33));
    EXPECT_LT(memory.growth(), 16L << 20); // its pixels are twice as much
    EXPECT_EQ(whole().size(), screen);
    EXPECT_GT(memory.growth(), 30L << 20) << "growth is not measured";
}
