// What leaves an editor: the new pixels and nothing else of the file.

#include "gui/EditorPictures.h"
#include "gui/PictureFiles.h"
#include "unit/Media/PngFile.h"

#include <QPainter>
#include <QtEndian>

#include <filesystem>

using namespace PictureFiles;

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
