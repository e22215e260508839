// Which pictures open in an editor, and what they look like there.

#include "gui/EditorPictures.h"
#include "gui/PictureFiles.h"
#include "support/TestLog.h"
#include "unit/Media/PngFile.h"

#include <QApplication>
#include <QPainter>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

using namespace PictureFiles;

namespace {

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
        Picture{"CutOffJpeg", cutOffJpeg, plain, 2}, // as browsers show one
        Picture{"Bitmap", [] { return encoded(plainImage(), "bmp"); }},
        Picture{"AtTwoPixelsAPoint",
                [] { return png(8, 2, "\x10\x20\x30", PngFile::density(5669, 1)); }, plain, 0, 2},
        Picture{"JpegAtTwoPixelsAPoint", jpegAtTwoPixelsAPoint, plain, 2, 2}),
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
