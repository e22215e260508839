#include "Editor/AnnotationRenderer.h"
#include "Editor/AnnotationShadow.h"
#include "Editor/AnnotationText.h"

#include "unit/Editor/Shapes.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using Geometry::Point;
using Kind = AnnotationKind;

const Geometry::Size size{200, 80};

Annotation label(const char* text, std::optional<double> fontSize, const char* color = "#FF3B30")
{
    Annotation result = markOf(Kind::text, {20, 25}, {20, 25}, 4, color);
    result.text = QString::fromUtf8(text);
    result.fontSize = fontSize;
    return result;
}

/// What differs from the ground, in points, y up; and how far each pixel is from it.
struct Ink {
    Geometry::Rect box;
    Point centre;
    double amount = 0; ///< In square points of full darkness.
};

/// How dark a white picture is in places. What is no darker than `leftOut` does not count.
Ink inkOn(const QImage& image, double density, double leftOut = 0)
{
    Ink ink;
    QRect box;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const double darkness = (255 - image.pixelColor(x, y).green()) / 255.0;
            if (darkness <= leftOut)
                continue;
            box |= QRect(x, y, 1, 1);
            ink.amount += darkness;
            ink.centre.x += darkness * (x + 0.5);
            ink.centre.y += darkness * (image.height() - y - 0.5);
        }
    }
    ink.centre = {ink.centre.x / ink.amount / density, ink.centre.y / ink.amount / density};
    ink.amount /= density * density;
    ink.box = {box.x() / density, (image.height() - box.y() - box.height()) / density,
               box.width() / density, box.height() / density};
    return ink;
}

/// Black text without a shadow on white.
Ink plainInk(const QString& text, double textSize, double density, double leftOut = 0)
{
    QImage image = plainPicture(size, density, Qt::white).pixels;
    QPainter painter(&image);
    painter.scale(density, density);
    AnnotationText::drawOutlines(painter, {20, size.height - 25}, text, textSize, QColor(0, 0, 0));
    painter.end();
    return inkOn(image, density, leftOut);
}

class DrawnText : public testing::TestWithParam<double> {
protected:
    static double density() { return GetParam(); }

    /// Of a black label: its shadow is never as dark as half.
    static Ink labelInk(const char* text, double fontSize)
    {
        return inkOn(drawn(label(text, fontSize, "#000000")), density(), 0.5);
    }

    static QImage drawn(const Annotation& annotation, const QColor& ground = Qt::white)
    {
        return AnnotationRenderer::flattened(plainPicture(size, density(), ground), {annotation});
    }
};

INSTANTIATE_TEST_SUITE_P(PixelsAPoint, DrawnText, testing::Values(1.0, 2.0));

} // namespace

TEST(TextMeasure, IsThatOfTheBoldSystemFontAtAnySize)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setBold(true);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setPixelSize(1000);
    const QFontMetricsF metrics(font);
    const QString text = QStringLiteral("Wrong total?");
    for (const double textSize : {14.0, 17.6, 19.0, 26.0, 3.3}) {
        const Geometry::Size measured = AnnotationText::measure(text, textSize);
        EXPECT_NEAR(measured.width, metrics.horizontalAdvance(text) * textSize / 1000,
                    0.01 * measured.width);
        EXPECT_NEAR(measured.height, metrics.height() * textSize / 1000, 0.02 * measured.height);
    }
    font.setBold(false);
    EXPECT_LT(QFontMetricsF(font).horizontalAdvance(text) / 1000,
              0.97 * AnnotationText::measure(text, 1).width);
}

TEST(TextMeasure, GrowsWithTheSizeExactly)
{
    const QString text = QStringLiteral("label");
    const Geometry::Size one = AnnotationText::measure(text, 17.6);
    const Geometry::Size two = AnnotationText::measure(text, 35.2);
    EXPECT_DOUBLE_EQ(two.width, 2 * one.width);
    EXPECT_DOUBLE_EQ(two.height, 2 * one.height);
}

TEST(TextMeasure, CountsLinesAndTheLongestOfThem)
{
    const Geometry::Size one = AnnotationText::measure(QStringLiteral("longest"), 20);
    for (const char16_t* text : {u"longest\nx", u"x\rlongest", u"longest\r\nx", u"x\u2028longest"})
    {
        const Geometry::Size two = AnnotationText::measure(QString::fromUtf16(text), 20);
        EXPECT_DOUBLE_EQ(two.width, one.width);
        EXPECT_DOUBLE_EQ(two.height, 2 * one.height);
    }
    EXPECT_EQ(AnnotationText::measure(QString(), 20).width, 0);
    EXPECT_EQ(AnnotationText::measure(QString(), 20).height, one.height);
    EXPECT_EQ(AnnotationText::measure(QStringLiteral("x"), -4), (Geometry::Size{0, 0}));
}

TEST_P(DrawnText, StandsInItsBoxAboveAndToTheRightOfItsOrigin)
{
    for (const double textSize : {14.0, 19.0, 26.0}) {
        const QString text = QStringLiteral("Hgp|H");
        const Geometry::Size box = AnnotationText::measure(text, textSize);
        const Ink ink = labelInk("Hgp|H", textSize);
        const double share = 0.12 * textSize; // bearings at the sides
        EXPECT_GE(ink.box.minX(), 20 - 1);
        EXPECT_LE(ink.box.minX(), 20 + share);
        EXPECT_LE(ink.box.maxX(), 20 + box.width + 1);
        EXPECT_GE(ink.box.maxX(), 20 + box.width - share);
        EXPECT_GE(ink.box.minY(), 25 - 1);
        EXPECT_LE(ink.box.maxY(), 25 + box.height + 1);
        EXPECT_GT(ink.box.height, 0.8 * textSize);
        const Ink outlines = plainInk(text, textSize, density(), 0.5);
        EXPECT_NEAR(ink.box.minX(), outlines.box.minX(), 1.01 / density());
        EXPECT_NEAR(ink.box.maxX(), outlines.box.maxX(), 1.01 / density());
        // A capital stands on the baseline, which is the font's descent above the box's edge.
        QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        font.setBold(true);
        font.setPixelSize(1000);
        const QFontMetricsF metrics(font);
        const Ink capital = labelInk("H", textSize);
        EXPECT_NEAR(capital.box.minY(), 25 + metrics.descent() * textSize / 1000, 1.01 / density());
        EXPECT_NEAR(capital.box.height, metrics.capHeight() * textSize / 1000, 2.01 / density());
    }
}

TEST_P(DrawnText, HasTheAnnotationsColour)
{
    const QImage image = drawn(label("H", 60), testGround);
    // The middle of the capital's first stem.
    const Ink capital = plainInk(QStringLiteral("H"), 60, density());
    const Point stem{capital.box.minX() + 4, capital.box.y + capital.box.height / 4};
    EXPECT_EQ(colorAt(image, density(), stem), QColor(0xFF, 0x3B, 0x30));
}

TEST_P(DrawnText, WithoutASizeIsDrawnAtEighteen)
{
    EXPECT_EQ(drawn(label("label", {})), drawn(label("label", 18)));
    EXPECT_NE(drawn(label("label", {})), drawn(label("label", 19)));
}

TEST_P(DrawnText, OfAFractionalSizeLiesBetweenWholeOnes)
{
    const double less = plainInk(QStringLiteral("label"), 17, density()).amount;
    const double between = plainInk(QStringLiteral("label"), 17.6, density()).amount;
    // Ink grows with the square of the size.
    EXPECT_NEAR(between / less, 17.6 * 17.6 / (17.0 * 17.0), 0.01);
}

TEST_P(DrawnText, IsNothingWhenEmptyAbsentOrWithoutSize)
{
    const QImage nothing = plainPicture(size, density(), Qt::white).pixels;
    Annotation annotation = label("", 20);
    EXPECT_EQ(drawn(annotation), nothing);
    annotation.text.reset();
    EXPECT_EQ(drawn(annotation), nothing);
    EXPECT_EQ(drawn(label("label", 0)), nothing);
    EXPECT_EQ(drawn(label("label", -5)), nothing);
    EXPECT_NE(drawn(label("label", 20)), nothing);
}

TEST_P(DrawnText, HasAShadow)
{
    // White on white: only what the shadow darkens outside of the text is seen, most of it below.
    const QImage image = drawn(label("label", 26, "#FFFFFF"));
    const Ink shadow = inkOn(image, density());
    const Ink text = plainInk(QStringLiteral("label"), 26, density());
    EXPECT_GT(shadow.amount, 0.1 * text.amount);
    EXPECT_LT(shadow.centre.y, text.centre.y - 0.5);
    EXPECT_NEAR(shadow.centre.x, text.centre.x, 0.6);
}

TEST_P(DrawnText, ShadowIsBlackAt45BlurredByTwoPointsOnePointBelow)
{
    // A block of 40 by 30 points, its bottom edge at 30 from the top of a picture of 100 by 100.
    QImage image = plainPicture({100, 100}, density(), Qt::white).pixels;
    const QRectF block(30, 30, 40, 30);
    QPainter painter(&image);
    painter.scale(density(), density());
    AnnotationShadow::draw(painter, block, block.height(),
                           [&](QPainter& mask) { mask.fillRect(block, QColor(0, 0, 0)); });
    painter.end();
    // Across an edge the blur is the normal distribution with a deviation of half the radius.
    const auto inside = [](double distance) { return 0.5 * std::erfc(-distance / std::sqrt(2.0)); };
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const double pointX = (x + 0.5) / density();
            const double pointY = (y + 0.5) / density() - 1;
            const double across = inside(pointX - 30) * inside(70 - pointX);
            const double down = inside(pointY - 30) * inside(60 - pointY);
            const double darkness = (255 - image.pixelColor(x, y).red()) / 255.0;
            ASSERT_NEAR(darkness, 0.45 * across * down, 0.025) << x << ", " << y;
        }
    }
}

TEST_P(DrawnText, CounterIsADiscWithAWhiteNumberInItsMiddle)
{
    // Number, line width, radius.
    for (const auto& [number, width, radius] : {std::tuple{1, 3.0, 12.0}, {88, 5.0, 16.0}}) {
        Annotation counter = markOf(Kind::counter, {60, 40}, {0, 0}, width);
        counter.number = number;
        const QImage image = drawn(counter, testGround);
        // Without what is white, it is the whole disc and nothing else.
        QImage disc = image;
        QImage numberAlone = plainPicture(size, density(), Qt::white).pixels;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const Point point{(x + 0.5) / density(), size.height - (y + 0.5) / density()};
                if (Geometry::distance(point, {60, 40}) > radius - 1.5)
                    continue;
                const QColor pixel = image.pixelColor(x, y);
                const int white = (pixel.green() - 0x3B) * 255 / (255 - 0x3B);
                numberAlone.setPixelColor(x, y, QColor(255 - white, 255 - white, 255 - white));
                disc.setPixelColor(x, y, QColor(0xFF, 0x3B, 0x30));
                EXPECT_EQ(pixel.red(), 0xFF);
            }
        }
        expectShape(disc, density(), Shapes::disc({60, 40}, radius), QColor(0xFF, 0x3B, 0x30));
        // As large as text of 1.1 radii, and no shadow.
        const Ink ink = inkOn(numberAlone, density());
        const Ink wanted = plainInk(QString::number(number), radius * 1.1, density());
        EXPECT_NEAR(ink.amount / wanted.amount, 1, 0.02);
        EXPECT_NEAR(ink.box.width, wanted.box.width, 1.01 / density());
        // Its layout box has its middle in the disc's.
        const Geometry::Size box = AnnotationText::measure(QString::number(number), radius * 1.1);
        EXPECT_NEAR(ink.centre.x - wanted.centre.x, 60 - box.width / 2 - 20, 0.15);
        EXPECT_NEAR(ink.centre.y - wanted.centre.y, 40 - box.height / 2 - 25, 0.15);
    }
}

TEST_P(DrawnText, CounterWithoutANumberShowsZero)
{
    Annotation counter = markOf(Kind::counter, {60, 40}, {0, 0}, 4);
    const QImage without = drawn(counter);
    counter.number = 0;
    EXPECT_EQ(without, drawn(counter));
    counter.number = 8;
    EXPECT_NE(without, drawn(counter));
    counter.number = std::numeric_limits<std::int64_t>::min();
    EXPECT_NE(without, drawn(counter));
}
