#include "Editor/AnnotationRenderer.h"

#include "unit/Editor/Shapes.h"

#include <QColorSpace>
#include <QPainter>
#include <QtEndian>

#include <gtest/gtest.h>

namespace {

using Kind = AnnotationKind;

/// One of every kind.
QList<Annotation> everyKind()
{
    Annotation label = markOf(Kind::text, {8.3, 70}, {0, 0}, 4, "#BF5AF2");
    label.text = QStringLiteral("label");
    label.fontSize = 19;
    Annotation counter = markOf(Kind::counter, {90, 70}, {0, 0}, 4, "#0A84FF");
    counter.number = 12;
    return {markOf(Kind::redact, {60.5, 10}, {95, 40}, 4),
            markOf(Kind::arrow, {5, 5}, {50, 30}, 4),
            markOf(Kind::line, {5, 30}, {50, 5}, 2, "#34C759"),
            markOf(Kind::rect, {60, 50}, {80, 95}, 7),
            markOf(Kind::ellipse, {5, 40}, {50, 60}, 3),
            strokeOf(Kind::freehand, {{10, 90}, {30, 95}, {50, 88}}, 4),
            strokeOf(Kind::highlight, {{10, 20}, {90, 25}}, 4, "#FFCC00"),
            label,
            counter};
}

struct Chunk {
    QByteArray type;
    QByteArray content;
};

QList<Chunk> chunksOf(const QByteArray& png)
{
    QList<Chunk> chunks;
    EXPECT_TRUE(png.startsWith("\x89PNG\r\n\x1A\n"));
    for (qsizetype at = 8; at + 12 <= png.size();) {
        const qsizetype length = qFromBigEndian<quint32>(png.constData() + at);
        chunks.append({png.mid(at + 4, 4), png.mid(at + 8, length)});
        at += 12 + length;
    }
    return chunks;
}

QByteArray pngOf(const BaseImage& base, const QList<Annotation>& annotations)
{
    const auto png = AnnotationRenderer::flattenedPng(base, annotations);
    EXPECT_TRUE(png);
    return png.value_or(QByteArray());
}

} // namespace

TEST(Flattening, KeepsEveryPixelOfAPictureWithoutAnnotations)
{
    BaseImage base = plainPicture({50, 40}, 2);
    base.pixels.setPixelColor(3, 5, QColor(1, 2, 3));
    const QImage image = QImage::fromData(pngOf(base, {}), "PNG");
    EXPECT_EQ(image.convertToFormat(QImage::Format_RGB32), base.pixels);
}

TEST(Flattening, HasThePicturesPixelsAndDensity)
{
    // Two pixels a point are 144 an inch.
    const QImage twice = QImage::fromData(pngOf(plainPicture({100, 50}, 2), everyKind()), "PNG");
    EXPECT_EQ(twice.size(), QSize(200, 100));
    EXPECT_EQ(twice.dotsPerMeterX(), 5669);
    EXPECT_EQ(twice.dotsPerMeterY(), 5669);
    const QImage once = QImage::fromData(pngOf(plainPicture({100, 50}, 1), {}), "PNG");
    EXPECT_EQ(once.size(), QSize(100, 50));
    EXPECT_EQ(once.dotsPerMeterX(), 2835);
}

TEST(Flattening, OfAPictureWithoutPixelsHasItsPointsCutOff)
{
    const BaseImage base{{}, {100.7, 50.2}};
    const QImage image =
        QImage::fromData(pngOf(base, {markOf(Kind::line, {10, 25}, {90, 25}, 6)}), "PNG");
    EXPECT_EQ(image.size(), QSize(100, 50));
    EXPECT_EQ(image.pixelColor(50, 25), QColor(0xFF, 0x3B, 0x30));
    EXPECT_EQ(image.pixelColor(50, 5).alpha(), 0);
}

TEST(Flattening, IsNothingWithoutAPicture)
{
    EXPECT_FALSE(AnnotationRenderer::flattenedPng({}, {}));
    EXPECT_FALSE(AnnotationRenderer::flattenedPng({{}, {0.5, 20}}, everyKind()));
}

TEST(Flattening, LetsNothingOutButTheNewPixels)
{
    BaseImage base = plainPicture({100, 100}, 1);
    base.pixels.setText(QStringLiteral("Author"), QStringLiteral("somebody"));
    base.pixels.setColorSpace(QColorSpace::DisplayP3);
    base.pixels.setOffset({3, 4});
    for (const QImage::Format format :
         {QImage::Format_RGB32, QImage::Format_ARGB32_Premultiplied, QImage::Format_Grayscale8})
    {
        base.pixels.convertTo(format);
        const QByteArray png = pngOf(base, everyKind());
        QList<QByteArray> types;
        for (const Chunk& chunk : chunksOf(png)) {
            if (types.isEmpty() || types.last() != chunk.type)
                types.append(chunk.type);
        }
        EXPECT_EQ(types, (QList<QByteArray>{"IHDR", "pHYs", "IDAT", "IEND"}));
        EXPECT_TRUE(png.endsWith(QByteArray::fromHex("AE426082"))) << "nothing follows the end";
        EXPECT_FALSE(png.contains("somebody"));
    }
}

TEST(Flattening, KeepsTransparency)
{
    BaseImage base = plainPicture({100, 100}, 1);
    base.pixels.convertTo(QImage::Format_ARGB32_Premultiplied);
    base.pixels.fill(QColor(200, 100, 0, 128));
    const QImage image =
        QImage::fromData(pngOf(base, {markOf(Kind::line, {10, 50}, {90, 50}, 6)}), "PNG");
    EXPECT_EQ(image.pixelColor(50, 10).alpha(), 128);
    EXPECT_NEAR(image.pixelColor(50, 10).red(), 200, 1);
    EXPECT_EQ(image.pixelColor(50, 50), QColor(0xFF, 0x3B, 0x30));
}

// The marks are at the same places of the picture whatever its density.
TEST(Flattening, LooksTheSameAtEveryDensity)
{
    const QImage once = AnnotationRenderer::flattened(plainPicture({100, 100}, 1), everyKind());
    const QImage twice = AnnotationRenderer::flattened(plainPicture({100, 100}, 2), everyKind())
                             .scaled(100, 100, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    double difference = 0;
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 100; ++x) {
            const QColor a = once.pixelColor(x, y);
            const QColor b = twice.pixelColor(x, y);
            const int most = std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                                       std::abs(a.blue() - b.blue())});
            EXPECT_LT(most, 128) << x << ", " << y;
            difference += most;
        }
    }
    EXPECT_LT(difference / 10'000, 2);
}

// A screen is a device with a pixel ratio, a scroll position and perhaps a zoom.
TEST(Flattening, IsPixelForPixelWhatTheScreenShows)
{
    for (const double density : {1.0, 2.0}) {
        const BaseImage base = plainPicture({100, 100}, density);
        QImage screen(static_cast<int>(140 * density), static_cast<int>(130 * density),
                      QImage::Format_RGB32);
        screen.fill(Qt::gray);
        screen.setDevicePixelRatio(density);
        QPainter painter(&screen);
        painter.drawImage(QRectF(30, 20, 100, 100), base.pixels);
        const QTransform before = painter.worldTransform();
        for (const Annotation& annotation : everyKind())
            AnnotationRenderer::draw(painter, Geometry::Flip({30, 20, 100, 100}), annotation, base);
        EXPECT_EQ(painter.worldTransform(), before);
        EXPECT_EQ(painter.compositionMode(), QPainter::CompositionMode_SourceOver);
        EXPECT_EQ(painter.opacity(), 1);
        EXPECT_EQ(painter.renderHints() & QPainter::Antialiasing, QPainter::RenderHints());
        painter.end();
        const int scale = static_cast<int>(density);
        const QImage shown = screen.copy(30 * scale, 20 * scale, 100 * scale, 100 * scale);
        const QImage flat = AnnotationRenderer::flattened(base, everyKind());
        for (int y = 0; y < flat.height(); ++y) {
            for (int x = 0; x < flat.width(); ++x)
                ASSERT_EQ(shown.pixel(x, y), flat.pixel(x, y)) << x << ", " << y;
        }
    }
}
