// Pictures that are not as captures are: very large ones, and those of formats that Qt reads by
// plugins, which a desktop may have or not.

#include "Media/Picture.h"
#include "gui/EditorPictures.h"
#include "gui/PictureFiles.h"
#include "support/PeakMemory.h"
#include "unit/Media/PngFile.h"

#include <QCoreApplication>

using namespace PictureFiles;

namespace {

/// By another program's hands.
std::string plainFile(const char* kind)
{
    return converted({"xc:#102030"}, kind);
}

/// To be run in a process of its own: plugins that have been found stay.
class WithoutImagePlugins : public EditorPictures {
protected:
    WithoutImagePlugins() { QCoreApplication::setLibraryPaths({}); }
};

} // namespace

TEST_F(EditorPictures, ALargeOneIsDrawnOnAndExported)
{
    // More than Qt reads by itself.
    constexpr int width = 8'400;
    constexpr int height = 8'000;
    writeFile(path(), PngFile{.width = width,
                              .height = height,
                              .bitDepth = 1,
                              .colourType = 0,
                              .row = std::string(width / 8, '\xff'),
                              .rows = height}
                          .bytes());
    {
        const PeakMemory memory;
        const auto editor = open();
        ASSERT_TRUE(editor);
        mark(*editor, EditorTool::line, {100, 100}, {8'300, 100});
        mark(*editor, EditorTool::redact, {6'000, 3'000}, {6'500, 3'200});
        settle();
        editor->exportFlattened();
        // The picture, a copy, and little else: four bytes a pixel each.
        EXPECT_LT(static_cast<double>(memory.growth()), 2.3 * 4 * width * height);
    }
    const auto copy = Picture::load(QString::fromStdString(folder / "picture annotated.png"));
    ASSERT_TRUE(copy);
    ASSERT_EQ(copy->size(), QSize(width, height));
    EXPECT_EQ(copy->pixelColor(4'000, height - 100), QColor(0xFF, 0x3B, 0x30));
    EXPECT_EQ(copy->pixelColor(4'000, height - 105), QColor(Qt::white));
}

TEST_F(EditorPictures, OfFormatsThatComeByPluginsOpenToo)
{
    for (const std::string& bytes :
         {plainFile("webp:"), plainFile("tiff:"),
          converted({"xc:#102030", "-define", "tiff:endian=msb"}, "tiff:")})
    {
        SCOPED_TRACE(bytes.substr(0, 4));
        writeFile(path(), bytes);
        const auto editor = open();
        ASSERT_TRUE(editor);
        const QColor colour = editor->canvas().image().pixels.pixelColor(20, 20);
        EXPECT_NEAR(colour.red(), plain.red(), 3);
        EXPECT_NEAR(colour.green(), plain.green(), 3);
        EXPECT_NEAR(colour.blue(), plain.blue(), 3);
    }
    writeFile(path(), plainFile("webp:").substr(0, 60)); // broken
    EXPECT_FALSE(open());
}

// Nothing is said either: the test program fails on warnings.
TEST_F(WithoutImagePlugins, PicturesOfTheirFormatsDoNotOpenAndCapturesDo)
{
    for (const char* kind : {"webp:", "tiff:", "jpeg:"}) {
        writeFile(path(), plainFile(kind));
        EXPECT_FALSE(open()) << kind;
    }
    writeFile(path(), plainFile("png:"));
    EXPECT_TRUE(open());
}
