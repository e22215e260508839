#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct Ended {
    int code = -1;
    QByteArray said;
};

Ended gallery(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(TAMRIK_GALLERY), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardError()};
}

} // namespace

TEST(Gallery, DrawsTheSheetAtAnyScale)
{
    const QTemporaryDir folder;
    QList<QSize> sizes;
    for (const char* scale : {"1", "2"}) {
        const QString file = folder.filePath(QLatin1String{scale});
        EXPECT_EQ(gallery({file, QLatin1String{scale}}).code, 0);
        const QImage sheet(file);
        sizes.append(sheet.size());
        // The ground is in the corner; a red button is somewhere.
        int red = 0;
        for (int y = 0; y < sheet.height(); ++y) {
            for (int x = 0; x < sheet.width(); ++x) {
                const QColor pixel = sheet.pixelColor(x, y);
                red += pixel.red() > 200 && pixel.green() < 110 && pixel.blue() < 110;
            }
        }
        EXPECT_GT(red, 1000);
        EXPECT_EQ(sheet.pixelColor(0, 0), QColor(0x1A, 0x1C, 0x20));
    }
    EXPECT_GT(sizes[0].height(), 600);
    EXPECT_EQ(sizes[1], sizes[0] * 2);
}

TEST(Gallery, DrawsTheAnnotationsAtAnyScale)
{
    const QTemporaryDir folder;
    QList<QImage> sheets;
    for (const char* scale : {"1", "2"}) {
        const QString file = folder.filePath(QLatin1String{scale});
        EXPECT_EQ(gallery({file, QLatin1String{scale}, QStringLiteral("annotations")}).code, 0);
        sheets.append(QImage(file));
    }
    EXPECT_EQ(sheets[1].size(), sheets[0].size() * 2);
    // Every colour that marks come in is somewhere.
    for (const QRgb color : {0xFFFF3B30, 0xFFFF9500, 0xFFFFCC00, 0xFF34C759, 0xFF0A84FF, 0xFFBF5AF2,
                             0xFF000000, 0xFFFFFFFF})
    {
        int count = 0;
        for (int y = 0; y < sheets[0].height(); ++y) {
            for (int x = 0; x < sheets[0].width(); ++x)
                count += sheets[0].pixel(x, y) == color;
        }
        EXPECT_GT(count, 500) << QColor(color).name().toStdString();
    }
}

TEST(Gallery, SaysHowItIsUsed)
{
    for (const QStringList& arguments :
         {QStringList{},
          {QStringLiteral("a.png")},
          {QStringLiteral("a.png"), QStringLiteral("0")},
          {QStringLiteral("a.png"), QStringLiteral("1"), QStringLiteral("other")}})
    {
        const Ended ended = gallery(arguments);
        EXPECT_EQ(ended.code, 2);
        EXPECT_TRUE(ended.said.startsWith("Usage: gallery FILE SCALE"));
    }
}

TEST(Gallery, SaysWhatItCannotWrite)
{
    const Ended ended = gallery({QStringLiteral("/nowhere/sheet.png"), QStringLiteral("1")});
    EXPECT_EQ(ended.code, 1);
    EXPECT_TRUE(ended.said.contains("/nowhere/sheet.png"));
}
