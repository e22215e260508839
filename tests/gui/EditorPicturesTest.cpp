// Which pictures open in an editor, what they look like there, and what leaves it.

#include "Editor/CanvasView.h"
#include "Editor/EditorWindowController.h"
#include "Media/Density.h"
#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "support/ChildProcess.h"
#include "support/EventLoop.h"
#include "support/TemporaryFolder.h"
#include "support/TestLog.h"
#include "unit/Media/PngFile.h"

#include <QBuffer>
#include <QColorSpace>
#include <QPainter>
#include <QTest>
#include <QtEndian>

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Pixels on a side of the pictures here, and bytes of a row of one bit a pixel.
constexpr int side = 40;
constexpr int bitRow = side / 8;

const QColor plain(0x10, 0x20, 0x30);

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

/// A PNG of one colour, whose pixels are stored as `pixel`.
std::string png(int bitDepth, int colourType, const std::string& pixel,
                const std::string& chunks = {})
{
    return PngFile{.width = side,
                   .height = side,
                   .bitDepth = bitDepth,
                   .colourType = colourType,
                   .chunks = chunks,
                   .row = repeated(pixel, bitDepth == 1 ? bitRow : side),
                   .rows = side}
        .bytes();
}

std::string paletteChunks(const std::string& alphas = {})
{
    const std::string colours =
        PngFile::chunk("PLTE", {'\xff', '\xff', '\xff', '\x10', '\x20', '\x30'});
    return alphas.empty() ? colours : colours + PngFile::chunk("tRNS", alphas);
}

/// At one pixel a point; Qt's own choice are 96 dots an inch.
std::string encoded(QImage image, const char* format)
{
    constexpr int dotsPerMetre = 2835;
    image.setDotsPerMeterX(dotsPerMetre);
    image.setDotsPerMeterY(dotsPerMetre);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format, 95));
    return buffer.data().toStdString();
}

QImage plainImage(const QColor& colour = plain)
{
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

/// What ImageMagick makes of these words.
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

/// An ICC profile for greys that are proportional to light.
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

/// What the matrix from Display P3's primaries to sRGB's (SMPTE EG 432-1) makes of that colour.
const QColor throughDisplayP3(83, 152, 118);

/// JPEG `bytes` with segments behind the first.
std::string withSegments(const std::string& bytes, const std::string& segments)
{
    return bytes.substr(0, 20) + segments + bytes.substr(20);
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

/// Two frames, the second green.
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

struct Picture {
    const char* name;
    std::string (*content)();
    QColor colour = plain;
    int tolerance = 0;
    double density = 1;
};

void PrintTo(const Picture& picture, std::ostream* out)
{
    *out << picture.name;
}

struct NoPicture {
    const char* name;
    std::string (*content)();
};

void PrintTo(const NoPicture& picture, std::ostream* out)
{
    *out << picture.name;
}

template <class Case>
std::string nameOf(const testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

class EditorPictures : public testing::Test {
protected:
    EditorPictures() { FakePlatform::reset(); }

    std::string path() const { return folder / "picture.png"; }

    std::unique_ptr<EditorWindowController> open() const
    {
        auto editor = EditorWindowController::open(
            QUrl::fromLocalFile(QString::fromStdString(path())), clock.clock());
        if (editor) {
            editor->makeKeyAndOrderFront();
            settle();
        }
        return editor;
    }

    static void mark(EditorWindowController& editor, EditorTool tool, Geometry::Point from,
                     Geometry::Point to)
    {
        CanvasModel& model = editor.canvas().model();
        model.setTool(tool);
        model.mouseDown(from);
        model.mouseDragged(to);
        model.mouseUp();
    }

    static QByteArray copied(EditorWindowController& editor)
    {
        FakePlatform::current().pasteboard.clear();
        editor.copyFlattened();
        const auto& items = FakePlatform::current().pasteboard;
        EXPECT_EQ(items.size(), 1U);
        EXPECT_FALSE(items.at(0).fileURL);
        return items.at(0).png.value_or(QByteArray());
    }

    TemporaryFolder folder;
    mutable FakeClock clock;
};

class EditorOpens : public EditorPictures, public testing::WithParamInterface<Picture> {};
class EditorRefuses : public EditorPictures, public testing::WithParamInterface<NoPicture> {};

void expectNear(const QColor& colour, const QColor& wanted, int tolerance)
{
    EXPECT_NEAR(colour.red(), wanted.red(), tolerance);
    EXPECT_NEAR(colour.green(), wanted.green(), tolerance);
    EXPECT_NEAR(colour.blue(), wanted.blue(), tolerance);
    EXPECT_NEAR(colour.alpha(), wanted.alpha(), tolerance);
}

} // namespace

TEST_P(EditorOpens, AndDrawsOnIt)
{
    const Picture& expected = GetParam();
    writeFile(path(), expected.content());
    const auto editor = open();
    ASSERT_TRUE(editor);
    const int points = static_cast<int>(side / expected.density);
    EXPECT_EQ(editor->canvas().size(), QSize(points, points));
    expectNear(editor->canvas().image().pixels.pixelColor(5, 5), expected.colour,
               expected.tolerance);

    const double middle = points / 2.0;
    mark(*editor, EditorTool::line, {0, middle}, {static_cast<double>(points), middle});
    const QImage copy = QImage::fromData(copied(*editor), "PNG");
    EXPECT_EQ(copy.size(), QSize(side, side));
    EXPECT_EQ(qRound(copy.dotsPerMeterX() * 0.0254), qRound(72 * expected.density));
    EXPECT_EQ(copy.pixelColor(side / 2, side / 2), QColor(0xFF, 0x3B, 0x30));
    expectNear(copy.pixelColor(5, 5), expected.colour, expected.tolerance);
}

INSTANTIATE_TEST_SUITE_P(
    Pictures, EditorOpens,
    testing::Values(
        Picture{"Rgb", [] { return png(8, 2, "\x10\x20\x30"); }},
        Picture{"Rgb16", [] { return png(16, 2, "\x10\x10\x20\x20\x30\x30"); }},
        Picture{"Rgba", [] { return png(8, 6, "\x10\x20\x30\xff"); }},
        Picture{"Rgba16", [] { return png(16, 6, "\x10\x10\x20\x20\x30\x30\x80\x80"); },
                QColor(0x10, 0x20, 0x30, 0x80), 2},
        Picture{"Grey", [] { return png(8, 0, "\x40"); }, QColor(0x40, 0x40, 0x40)},
        Picture{"Grey16", [] { return png(16, 0, "\x40\x40"); }, QColor(0x40, 0x40, 0x40)},
        Picture{"Grey1", [] { return png(1, 0, "\xff"); }, QColor(Qt::white)},
        Picture{"GreyAlpha", [] { return png(8, 4, "\x40\x80"); }, QColor(64, 64, 64, 128), 2},
        Picture{"GreyAlpha16", [] { return png(16, 4, "\x40\x40\x80\x80"); },
                QColor(64, 64, 64, 128), 2},
        Picture{"GreyWithAClearOne",
                [] { return png(8, 0, "\x40", PngFile::chunk("tRNS", std::string("\0\x40", 2))); },
                QColor(0, 0, 0, 0)},
        Picture{"Palette1", [] { return png(1, 3, "\xff", paletteChunks()); }},
        Picture{"Palette8", [] { return png(8, 3, "\1", paletteChunks()); }},
        Picture{"PaletteTranslucent", [] { return png(8, 3, "\1", paletteChunks("\xff\x80")); },
                QColor(0x10, 0x20, 0x30, 0x80), 2},
        Picture{"GreyWithProfile",
                [] { return png(8, 0, "\x80", profileChunk(linearGreyProfile())); },
                QColor(188, 188, 188), 1},
        Picture{"PngWithProfile", [] { return withProfile(QColorSpace::DisplayP3, "png"); },
                throughDisplayP3, 1},
        Picture{"JpegWithProfile", [] { return withProfile(QColorSpace::DisplayP3, "jpeg"); },
                throughDisplayP3, 3},
        Picture{"AnimatedPng", animatedPng},
        Picture{"AnimatedGif",
                [] {
                    return converted({"xc:#102030", "xc:#00ff00"}, "gif:");
                }},
        Picture{"InterlacedPng",
                [] {
                    return converted({"xc:#102030", "-interlace", "PNG"}, "png:");
                }},
        Picture{"Jpeg", [] { return encoded(plainImage(), "jpeg"); }, plain, 2},
        Picture{"JpegGrey",
                [] {
                    return encoded(
                        plainImage(QColor(64, 64, 64)).convertToFormat(QImage::Format_Grayscale8),
                        "jpeg");
                },
                QColor(64, 64, 64), 2},
        Picture{"JpegCmyk",
                [] {
                    return converted({"xc:#ff0000", "-colorspace", "CMYK"}, "jpeg:");
                },
                QColor(Qt::red), 4},
        Picture{"Bitmap", [] { return encoded(plainImage(), "bmp"); }},
        Picture{"AtTwoPixelsAPoint",
                [] { return png(8, 2, "\x10\x20\x30", PngFile::density(5669, 1)); }, plain, 0, 2},
        Picture{"JpegAtTwoPixelsAPoint",
                [] {
                    return withSegments(encoded(plainImage(), "jpeg").replace(13, 1, {'\0'}),
                                        exifSegment(exifBlock(1, 144)));
                },
                plain, 2, 2}),
    nameOf<Picture>);

TEST_F(EditorPictures, StandUpright)
{
    QImage stored(2 * side, side, QImage::Format_RGB32);
    stored.fill(Qt::white);
    QPainter(&stored).fillRect(0, 0, side, side / 2, Qt::blue); // the first quarter
    const std::string bytes = encoded(stored, "jpeg");
    // Which quarter that becomes, from the top left clockwise.
    constexpr int quarters[] = {0, 0, 1, 2, 3, 0, 1, 2, 3};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        writeFile(path(), withSegments(bytes, exifSegment(exifBlock(orientation))));
        const auto editor = open();
        ASSERT_TRUE(editor);
        const QImage& upright = editor->canvas().image().pixels;
        ASSERT_EQ(upright.size(), orientation > 4 ? stored.size().transposed() : stored.size());
        const int right = upright.width() - 5;
        const int bottom = upright.height() - 5;
        const QPoint corners[] = {{5, 5}, {right, 5}, {right, bottom}, {5, bottom}};
        for (int quarter = 0; quarter < 4; ++quarter) {
            expectNear(upright.pixelColor(corners[quarter]),
                       quarter == quarters[orientation] ? Qt::blue : Qt::white, 6);
        }
    }
}

// Nothing is said either: the test program fails on warnings.
TEST_P(EditorRefuses, WhatIsNoPicture)
{
    writeFile(path(), GetParam().content());
    const auto windows = QApplication::topLevelWidgets().size();
    EXPECT_FALSE(open());
    EXPECT_EQ(QApplication::topLevelWidgets().size(), windows);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"picture.png"}));
}

INSTANTIATE_TEST_SUITE_P(
    Files, EditorRefuses,
    testing::Values(
        NoPicture{"Empty", [] { return std::string(); }},
        NoPicture{"Text", [] { return std::string("This is no picture.\n"); }},
        NoPicture{"HalfAPng",
                  [] {
                      const std::string whole = converted({"plasma:"}, "png:");
                      return whole.substr(0, whole.size() / 2);
                  }},
        NoPicture{"AHeaderOfAPng", [] { return png(8, 2, "\x10\x20\x30").substr(0, 33); }},
        NoPicture{"AHeaderOfAJpeg", [] { return encoded(plainImage(), "jpeg").substr(0, 100); }},
        NoPicture{"AHugePng",
                  [] { return PngFile{.width = 60'000, .height = 60'000, .row = "x"}.bytes(); }},
        NoPicture{"AHugeJpeg",
                  [] {
                      std::string jpeg = encoded(plainImage(), "jpeg");
                      return jpeg.replace(jpeg.find("\xff\xc0") + 5, 4, "\xff\xff\xff\xff");
                  }},
        NoPicture{"ADrawing",
                  [] { return std::string("<svg xmlns='http://www.w3.org/2000/svg'/>"); }}),
    nameOf<NoPicture>);

TEST_F(EditorPictures, WhatCannotBeReadDoesNotOpen)
{
    EXPECT_FALSE(open()) << "it does not exist";
    ASSERT_EQ(mkdir(path().c_str(), 0700), 0);
    EXPECT_FALSE(open()) << "a folder";
    std::filesystem::remove(path());
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_FALSE(open()) << "nobody ever writes to it";
    std::filesystem::remove(path());

    writeFile(path(), png(8, 2, "\x10\x20\x30"));
    ASSERT_EQ(chmod(path().c_str(), 0), 0);
    constexpr uid_t nobody = 65534; // root may read everything
    const uid_t self = geteuid();
    ASSERT_TRUE(self != 0 || seteuid(nobody) == 0);
    EXPECT_FALSE(open()) << "nobody may read it";
    ASSERT_EQ(seteuid(self), 0);
    ASSERT_EQ(chmod(path().c_str(), 0600), 0);
    EXPECT_TRUE(open());
}

TEST_F(EditorPictures, OneThatVanishesIsStillThere)
{
    writeFile(path(), png(8, 2, "\x10\x20\x30"));
    const auto editor = open();
    ASSERT_TRUE(editor);
    std::filesystem::remove_all(folder.path());
    mark(*editor, EditorTool::line, {0, 20}, {40, 20});
    const QImage copy = QImage::fromData(copied(*editor), "PNG");
    EXPECT_EQ(copy.pixelColor(5, 5), plain);
    EXPECT_EQ(copy.pixelColor(20, 20), QColor(0xFF, 0x3B, 0x30));
    editor->exportFlattened();
    EXPECT_EQ(editor->window().windowTitle(), QStringLiteral("Export failed"));
    EXPECT_EQ(TestLog::takeLines().size(), 1);
    editor->window().close();
    EXPECT_FALSE(std::filesystem::exists(folder.path()));
}

namespace {

QList<QByteArray> chunksOf(const QByteArray& file)
{
    QList<QByteArray> types;
    qsizetype at = 8;
    while (at + 12 <= file.size()) {
        const QByteArray type = file.mid(at + 4, 4);
        if (types.isEmpty() || types.last() != type)
            types.append(type);
        at += 12 + qFromBigEndian<quint32>(file.constData() + at);
    }
    EXPECT_EQ(at, file.size()) << "something follows the last chunk";
    return types;
}

/// EXIF with a picture of its own behind it.
std::string exifWithThumbnail()
{
    return exifBlock(1, 72) + encoded(plainImage(Qt::white), "jpeg") + "secret thumbnail";
}

std::string tellingPng()
{
    // Stripes of a point, which a reader could tell letters from.
    const std::string compressed = qCompress("https://secret.example/z").mid(4).toStdString();
    const std::string chunks =
        profileChunk(QColorSpace(QColorSpace::AdobeRgb).iccProfile()) +
        PngFile::chunk("eXIf", exifWithThumbnail()) +
        PngFile::chunk("tIME", std::string("\x07\xea\1\2\3\4\5", 7)) +
        PngFile::chunk("tEXt", std::string("Source\0https://secret.example/a", 31)) +
        PngFile::chunk("zTXt", std::string("Title\0\0", 7) + compressed) +
        PngFile::chunk("iTXt", std::string("XML\0\0\0\0\0https://secret.example/b", 32)) +
        PngFile::chunk("seCr", "secret chunk");
    return PngFile{.width = side,
                   .height = side,
                   .chunks = chunks,
                   .row = repeated(std::string("\0\0\0\xff\xff\xff", 6), side / 2),
                   .rows = side}
               .bytes() +
           "secret after the end";
}

std::string tellingJpeg()
{
    QImage stripes = plainImage(Qt::white);
    for (int x = 0; x < side; x += 2)
        QPainter(&stripes).fillRect(x, 0, 1, side, Qt::black);
    stripes.setColorSpace(QColorSpace::DisplayP3);
    return withSegments(encoded(stripes, "jpeg"),
                        exifSegment(exifWithThumbnail()) +
                            segment("\xff\xfe", "https://secret.example/comment")) +
           "secret after the end";
}

} // namespace

TEST_F(EditorPictures, WhatLeavesHasNothingOfTheFileButItsPixels)
{
    for (const std::string& source : {tellingPng(), tellingJpeg()}) {
        ASSERT_NE(source.find("secret"), std::string::npos);
        writeFile(path(), source);
        const auto editor = open();
        ASSERT_TRUE(editor);
        mark(*editor, EditorTool::redact, {0, 0}, {18, 40});
        const QByteArray copy = copied(*editor);
        editor->exportFlattened();
        const QByteArray exported =
            QByteArray::fromStdString(contentOf(folder / "picture annotated.png"));
        EXPECT_EQ(editor->window().windowTitle(),
                  QStringLiteral("Exported ✓ picture annotated.png"));
        for (const QByteArray& file : {copy, exported}) {
            EXPECT_EQ(chunksOf(file), (QList<QByteArray>{"IHDR", "pHYs", "IDAT", "IEND"}));
            EXPECT_FALSE(file.contains("secret"));
            const QImage image = QImage::fromData(file, "PNG");
            EXPECT_TRUE(image.textKeys().isEmpty());
            EXPECT_FALSE(image.colorSpace().isValid() &&
                         image.colorSpace() != QColorSpace(QColorSpace::SRgb));
            // Beside the redaction are the stripes, under it they are no more.
            EXPECT_GT(qGray(image.pixel(31, 5)) - qGray(image.pixel(30, 5)), 150);
            for (int x = 0; x < 18; ++x) // in blocks of nine
                EXPECT_EQ(image.pixel(x, 5), image.pixel(x / 9 * 9, 5)) << x;
        }
        std::filesystem::remove(path() + ".tamrik.json");
    }
}
