#include "Editor/AnnotationRenderer.h"

#include "unit/Editor/Shapes.h"

#include <QPainter>
#include <QSet>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using Kind = AnnotationKind;

/// No two neighbours of which are alike.
BaseImage noise(QSize pixels, double density, bool hasAlpha = false)
{
    QImage image(pixels, hasAlpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    std::mt19937 random(7);
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x) {
            const QRgb any = static_cast<QRgb>(random());
            image.setPixel(x, y, hasAlpha ? qPremultiply(any) : any | 0xFF000000);
        }
    }
    return BaseImage::ofDensity(image, density);
}

QImage redacted(const BaseImage& base, Geometry::Point from, Geometry::Point to)
{
    return AnnotationRenderer::flattened(base, {markOf(Kind::redact, from, to, 4)});
}

/// The mean of some of a picture's pixels, each channel rounded.
QRgb mean(const QImage& image, const QRect& pixels)
{
    double red = 0;
    double green = 0;
    double blue = 0;
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        for (int x = pixels.left(); x <= pixels.right(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            red += qRed(pixel);
            green += qGreen(pixel);
            blue += qBlue(pixel);
        }
    }
    const double count = pixels.width() * pixels.height();
    return qRgb(static_cast<int>(red / count + 0.5), static_cast<int>(green / count + 0.5),
                static_cast<int>(blue / count + 0.5));
}

/// Every pixel of `pixels` has the colour of their mean in the picture.
void expectBlock(const QImage& image, const BaseImage& base, const QRect& pixels)
{
    const QRgb wanted = mean(base.pixels, pixels);
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        for (int x = pixels.left(); x <= pixels.right(); ++x)
            ASSERT_EQ(image.pixel(x, y), wanted) << x << ", " << y;
    }
}

void expectUnchangedOutside(const QImage& image, const BaseImage& base, const QRect& redaction)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (redaction.contains(x, y))
                ASSERT_NE(image.pixel(x, y), base.pixels.pixel(x, y)) << x << ", " << y;
            else
                ASSERT_EQ(image.pixel(x, y), base.pixels.pixel(x, y)) << x << ", " << y;
        }
    }
}

} // namespace

TEST(Redaction, IsBlocksOfNinePoints)
{
    const BaseImage base = noise({60, 50}, 1);
    const QImage image = redacted(base, {48, 34}, {12, 7});
    expectUnchangedOutside(image, base, QRect(12, 16, 36, 27));
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column)
            expectBlock(image, base, QRect(12 + 9 * column, 16 + 9 * row, 9, 9));
    }
}

TEST(Redaction, HasBlocksOfEighteenPixelsAtTwoPixelsAPoint)
{
    const BaseImage base = noise({120, 100}, 2);
    const QImage image = redacted(base, {12, 7}, {39, 25});
    expectUnchangedOutside(image, base, QRect(24, 50, 54, 36));
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < 3; ++column)
            expectBlock(image, base, QRect(24 + 18 * column, 50 + 18 * row, 18, 18));
    }
}

TEST(Redaction, CountsBlocksFromItsBottomLeftCorner)
{
    // 3 points wide and 100 high: one block wide; eleven high and a ninth of one, at the top.
    const BaseImage base = noise({20, 120}, 1);
    const QImage image = redacted(base, {5, 10}, {8, 110});
    expectUnchangedOutside(image, base, QRect(5, 10, 3, 100));
    for (int row = 0; row < 11; ++row)
        expectBlock(image, base, QRect(5, 110 - 9 * (row + 1), 3, 9));
    expectBlock(image, base, QRect(5, 10, 3, 1));
}

TEST(Redaction, OfTwoPointsIsNothing)
{
    const BaseImage base = noise({40, 40}, 2);
    EXPECT_EQ(redacted(base, {5, 2}, {7, 18}), base.pixels);
    EXPECT_EQ(redacted(base, {2, 7}, {18, 5}), base.pixels);
    EXPECT_NE(redacted(base, {5, 2}, {7.5, 18}), base.pixels);
}

TEST(Redaction, LeavesNoPixelThatItTouches)
{
    for (const double density : {1.0, 1.5, 2.0}) {
        const BaseImage base = noise({90, 90}, density);
        const QImage image = redacted(base, {10.3, 12.7}, {41.2, 33.9});
        const QPoint topLeft(static_cast<int>(std::floor(10.3 * density)),
                             90 - static_cast<int>(std::ceil(33.9 * density)));
        const QPoint bottomRight(static_cast<int>(std::ceil(41.2 * density)) - 1,
                                 90 - static_cast<int>(std::floor(12.7 * density)) - 1);
        expectUnchangedOutside(image, base, QRect(topLeft, bottomRight));
    }
}

TEST(Redaction, EndsWhereThePictureDoes)
{
    const BaseImage base = noise({40, 30}, 1);
    const QImage image = redacted(base, {-5, 21}, {4, 60});
    expectUnchangedOutside(image, base, QRect(0, 0, 4, 9));
    expectBlock(image, base, QRect(0, 0, 4, 9));
    EXPECT_EQ(redacted(base, {50, 0}, {90, 20}), base.pixels);
    EXPECT_EQ(redacted(base, {-90, 0}, {0, 20}), base.pixels);
    EXPECT_EQ(redacted({{}, {40, 30}}, {0, 0}, {20, 20}).size(), QSize(40, 30));
}

TEST(Redaction, HidesEverythingHoweverLargeItIs)
{
    const BaseImage base = noise({40, 30}, 2);
    for (const double far : {1e4, 1e30, 1.7e308})
        expectUnchangedOutside(redacted(base, {-far, -far}, {far, far}), base, QRect(0, 0, 40, 30));
}

TEST(Redaction, ShowsThePictureAndNotTheMarksBelow)
{
    const BaseImage base = noise({60, 50}, 1);
    const Annotation line = markOf(Kind::line, {20, 20}, {40, 20}, 8);
    const Annotation redaction = markOf(Kind::redact, {10, 8}, {50, 40}, 4);
    const QImage alone = AnnotationRenderer::flattened(base, {redaction});
    EXPECT_EQ(AnnotationRenderer::flattened(base, {line, redaction}), alone);
    EXPECT_NE(AnnotationRenderer::flattened(base, {redaction, line}), alone);
    // One over another shows nothing finer.
    EXPECT_EQ(AnnotationRenderer::flattened(base, {redaction, redaction}), alone);
}

TEST(Redaction, IsTheSameHoweverThePictureIsStored)
{
    const BaseImage base = noise({60, 50}, 1);
    const QImage image = redacted(base, {10, 8}, {50, 40});
    for (const QImage::Format format : {QImage::Format_RGB888, QImage::Format_RGBA8888,
                                        QImage::Format_ARGB32, QImage::Format_RGBX8888})
    {
        const BaseImage other = BaseImage::ofDensity(base.pixels.convertToFormat(format), 1);
        EXPECT_EQ(redacted(other, {10, 8}, {50, 40}).convertToFormat(QImage::Format_RGB32), image);
    }
}

TEST(Redaction, NothingShinesThroughWhereThePictureIsTranslucent)
{
    const BaseImage base = noise({60, 50}, 1, true);
    const Annotation redaction = markOf(Kind::redact, {12, 7}, {48, 34}, 4);
    const QImage image = AnnotationRenderer::flattened(base, {redaction});
    EXPECT_EQ(qAlpha(image.pixel(30, 30)), 255);
    const Annotation line = markOf(Kind::line, {20, 20}, {40, 20}, 8);
    EXPECT_EQ(AnnotationRenderer::flattened(base, {line, redaction}), image);
    for (int y = 16; y < 43; ++y) {
        for (int x = 12; x < 48; ++x)
            ASSERT_EQ(image.pixel(x, y), image.pixel(x - (x - 12) % 9, y - (y - 16) % 9));
    }
}

TEST(Redaction, KeepsHardEdgesUnderAZoom)
{
    const BaseImage base = noise({60, 50}, 1);
    const QImage flat = redacted(base, {12, 7}, {48, 34});
    QSet<QRgb> colors;
    for (int y = 16; y < 43; ++y) {
        for (int x = 12; x < 48; ++x)
            colors.insert(flat.pixel(x, y));
    }
    EXPECT_EQ(colors.size(), 12);
    for (const double zoom : {0.7, 1.7, 3.0}) {
        QImage screen(180, 150, QImage::Format_RGB32);
        screen.fill(Qt::white);
        QPainter painter(&screen);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.scale(zoom, zoom);
        AnnotationRenderer::draw(painter, Geometry::Flip({0, 0, 60, 50}),
                                 markOf(Kind::redact, {12, 7}, {48, 34}, 4), base);
        EXPECT_TRUE(painter.testRenderHint(QPainter::SmoothPixmapTransform));
        painter.end();
        QSet<QRgb> seen;
        for (int y = 0; y < screen.height(); ++y) {
            for (int x = 0; x < screen.width(); ++x)
                seen.insert(screen.pixel(x, y));
        }
        seen.remove(qRgb(255, 255, 255));
        EXPECT_EQ(seen, colors) << zoom;
    }
}
