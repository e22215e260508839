#include "Media/FrameReader.h"

#include "support/TemporaryFolder.h"
#include "unit/Media/PngFile.h"
#include "unit/Media/Videos.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace {

using Words = std::vector<std::string>;

/// Luma and chroma of a colour for weights of red and blue, by the definition in BT.601 and BT.709.
std::array<int, 3> yuvOf(const QColor& colour, double red, double blue, bool isFull)
{
    const double r = colour.redF(), g = colour.greenF(), b = colour.blueF();
    const double y = red * r + (1 - red - blue) * g + blue * b;
    const double u = (b - y) / (2 * (1 - blue));
    const double v = (r - y) / (2 * (1 - red));
    if (isFull)
        return {qRound(255 * y), qRound(128 + 255 * u), qRound(128 + 255 * v)};
    return {qRound(16 + 219 * y), qRound(128 + 224 * u), qRound(128 + 224 * v)};
}

/// A frame of raw 4:2:0 video of one colour.
std::string rawFrame(QSize size, const std::array<int, 3>& yuv)
{
    const auto pixels =
        static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height());
    return std::string(pixels, static_cast<char>(yuv[0])) +
           std::string(pixels / 4, static_cast<char>(yuv[1])) +
           std::string(pixels / 4, static_cast<char>(yuv[2]));
}

class FramePicture : public testing::Test {
protected:
    FrameReader opened() const
    {
        auto reader = FrameReader::open(QString::fromStdString(m_folder / "video.mp4"));
        if (!reader)
            throw std::runtime_error(reader.failure().message);
        return std::move(*reader);
    }

    static QImage frameOf(FrameReader& reader, QSize box = {})
    {
        const auto image = reader.frameAt(0, box);
        if (!image) {
            ADD_FAILURE() << image.failure().message;
            return {};
        }
        EXPECT_EQ(image->format(), QImage::Format_RGB32);
        return *image;
    }

    void encodeColour(QSize size, const std::array<int, 3>& yuv, const Words& tags)
    {
        writeFile(m_folder / "raw", rawFrame(size, yuv));
        Words words{"-f",       "rawvideo",
                    "-pix_fmt", "yuv420p",
                    "-s",       std::to_string(size.width()) + "x" + std::to_string(size.height()),
                    "-i",       m_folder / "raw",
                    "-c:v",     "libx264",
                    "-qp",      "1"};
        words.insert(words.end(), tags.begin(), tags.end());
        words.push_back(m_folder / "video.mp4");
        Videos::make(words);
    }

    void expectColour(const QColor& wanted) const
    {
        FrameReader reader = opened();
        const QImage image = frameOf(reader);
        const QColor seen = image.pixelColor(image.width() / 2, image.height() / 2);
        EXPECT_NEAR(seen.red(), wanted.red(), 3);
        EXPECT_NEAR(seen.green(), wanted.green(), 3);
        EXPECT_NEAR(seen.blue(), wanted.blue(), 3);
    }

    /// 160 x 80 pixels: red at the top left, green at the top right, blue below, white beside it.
    void encodeQuarters(const Words& options)
    {
        QImage image(160, 80, QImage::Format_RGB32);
        image.fill(Qt::white);
        for (int y = 0; y < 80; ++y) {
            for (int x = 0; x < 160; ++x) {
                if (y < 40)
                    image.setPixelColor(x, y, x < 80 ? Qt::red : Qt::green);
                else if (x >= 80)
                    image.setPixelColor(x, y, Qt::blue);
            }
        }
        ASSERT_TRUE(image.save(QString::fromStdString(m_folder / "frame.png")));
        Words words{"-i", m_folder / "frame.png", "-pix_fmt", "yuv444p", "-qp", "1"};
        words.insert(words.end(), options.begin(), options.end());
        words.push_back(m_folder / "video.mp4");
        Videos::make(words);
    }

    /// From the top left clockwise.
    static void expectCorners(const QImage& image, const std::array<QColor, 4>& wanted)
    {
        const int right = image.width() - 6;
        const int bottom = image.height() - 6;
        const std::array<QPoint, 4> points{QPoint(5, 5), {right, 5}, {right, bottom}, {5, bottom}};
        for (std::size_t i = 0; i < 4; ++i) {
            const QColor seen = image.pixelColor(points.at(i));
            EXPECT_NEAR(seen.red(), wanted.at(i).red(), 6) << i;
            EXPECT_NEAR(seen.green(), wanted.at(i).green(), 6) << i;
            EXPECT_NEAR(seen.blue(), wanted.at(i).blue(), 6) << i;
        }
    }

    TemporaryFolder m_folder;
};

const QColor orange(220, 120, 40);

} // namespace

TEST_F(FramePicture, HasTheColoursThatItsTagsMean)
{
    encodeColour({64, 48}, yuvOf(orange, 0.2126, 0.0722, false), {"-colorspace", "bt709"});
    expectColour(orange);
    encodeColour({64, 48}, yuvOf(orange, 0.299, 0.114, false), {"-colorspace", "smpte170m"});
    expectColour(orange);
    encodeColour({64, 48}, yuvOf(orange, 0.2627, 0.0593, false), {"-colorspace", "bt2020nc"});
    expectColour(orange);
    encodeColour({64, 48}, yuvOf(orange, 0.2126, 0.0722, true),
                 {"-colorspace", "bt709", "-color_range", "pc"});
    expectColour(orange);
    encodeColour({64, 48}, yuvOf(Qt::black, 0.2126, 0.0722, false), {"-colorspace", "bt709"});
    expectColour(Qt::black);
    encodeColour({64, 48}, yuvOf(Qt::white, 0.2126, 0.0722, false), {"-colorspace", "bt709"});
    expectColour(Qt::white);
}

TEST_F(FramePicture, HasTheColoursThatItsSizeSuggests)
{
    encodeColour({64, 48}, yuvOf(orange, 0.299, 0.114, false), {});
    expectColour(orange);
    encodeColour({1280, 720}, yuvOf(orange, 0.2126, 0.0722, false), {});
    expectColour(orange);
}

TEST_F(FramePicture, IsUpright)
{
    encodeQuarters({});
    const std::string bytes = contentOf(m_folder / "video.mp4");
    const QColor red = Qt::red, green = Qt::green, blue = Qt::blue, white = Qt::white;
    struct Case {
        std::array<int, 4> matrix;
        QSize size;
        std::array<QColor, 4> corners;
    };
    const std::array<Case, 8> cases{{
        {{1, 0, 0, 1}, {160, 80}, {red, green, blue, white}},
        {{0, 1, -1, 0}, {80, 160}, {white, red, green, blue}}, // turned clockwise
        {{-1, 0, 0, -1}, {160, 80}, {blue, white, red, green}},
        {{0, -1, 1, 0}, {80, 160}, {green, blue, white, red}},
        {{-1, 0, 0, 1}, {160, 80}, {green, red, white, blue}}, // mirrored
        {{1, 0, 0, -1}, {160, 80}, {white, blue, green, red}},
        {{0, 1, 1, 0}, {80, 160}, {red, white, blue, green}},
        {{1, 1, -1, 1}, {160, 80}, {red, green, blue, white}}, // by half a quarter: left out
    }};
    for (const Case& turned : cases) {
        const auto [a, b, c, d] = turned.matrix;
        SCOPED_TRACE(testing::Message() << a << " " << b << " " << c << " " << d);
        writeFile(m_folder / "video.mp4", Videos::withMatrix(bytes, a, b, c, d));
        FrameReader reader = opened();
        EXPECT_EQ(reader.size(), turned.size);
        EXPECT_EQ(frameOf(reader).size(), turned.size);
        expectCorners(frameOf(reader), turned.corners);
        expectCorners(frameOf(reader, {60, 60}), turned.corners);
        EXPECT_EQ(frameOf(reader, {60, 60}).size(),
                  turned.size.scaled(60, 60, Qt::KeepAspectRatio));
    }
}

TEST_F(FramePicture, HasSquarePixels)
{
    encodeQuarters({"-vf", "setsar=2/1"});
    FrameReader wide = opened();
    EXPECT_EQ(wide.size(), QSize(320, 80));
    EXPECT_EQ(frameOf(wide).size(), QSize(320, 80));
    EXPECT_EQ(frameOf(wide, {160, 160}).size(), QSize(160, 40));
    expectCorners(frameOf(wide), {Qt::red, Qt::green, Qt::blue, Qt::white});
    encodeQuarters({"-vf", "setsar=1/2"});
    EXPECT_EQ(opened().size(), QSize(80, 80));
    writeFile(m_folder / "video.mp4",
              Videos::withMatrix(contentOf(m_folder / "video.mp4"), 0, 1, -1, 0));
    EXPECT_EQ(opened().size(), QSize(80, 80));
    encodeQuarters({"-vf", "setsar=2/1"});
    writeFile(m_folder / "video.mp4",
              Videos::withMatrix(contentOf(m_folder / "video.mp4"), 0, 1, -1, 0));
    EXPECT_EQ(opened().size(), QSize(80, 320)) << "the shape is that of the stored pixels";
}

TEST_F(FramePicture, HasThePixelsThatTheContainerStates)
{
    encodeQuarters({"-vf", "setsar=2/1"});
    std::string bytes = contentOf(m_folder / "video.mp4");
    const std::size_t shape = bytes.find("pasp");
    ASSERT_NE(shape, std::string::npos);
    writeFile(m_folder / "video.mp4",
              bytes.replace(shape + 4, 8, PngFile::number(3) + PngFile::number(1)));
    EXPECT_EQ(opened().size(), QSize(480, 80));
}

TEST_F(FramePicture, FitsIntoABoxButIsNeverEnlarged)
{
    encodeQuarters({});
    FrameReader reader = opened();
    EXPECT_EQ(frameOf(reader, {600, 600}).size(), QSize(160, 80));
    EXPECT_EQ(frameOf(reader, {100, 100}).size(), QSize(100, 50));
    EXPECT_EQ(frameOf(reader, {1000, 10}).size(), QSize(20, 10));
    EXPECT_EQ(frameOf(reader, {1, 1}).size(), QSize(1, 1));
    expectCorners(frameOf(reader, {99, 99}), {Qt::red, Qt::green, Qt::blue, Qt::white});
}

TEST_F(FramePicture, IsOpaqueWhereTheVideoIsNot)
{
    QImage image(32, 32, QImage::Format_ARGB32);
    image.fill(qRgba(200, 100, 50, 0));
    ASSERT_TRUE(image.save(QString::fromStdString(m_folder / "frame.png")));
    Videos::make({"-i", m_folder / "frame.png", "-c:v", "qtrle", "-pix_fmt", "argb", "-f", "mov",
                  m_folder / "video.mp4"});
    FrameReader reader = opened();
    for (const QSize box : {QSize(), QSize(16, 16)}) {
        const QImage frame = frameOf(reader, box);
        EXPECT_EQ(frame.constScanLine(9)[9 * 4 + 3], 255) << "pixel() would say so in any case";
    }
}
