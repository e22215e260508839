// What a canvas shows at any zoom, next to what it should by formulas: nothing of it is a smaller
// or larger picture of what was drawn at another size.

#include "Editor/CanvasView.h"
#include "fakes/FakePlatform.h"
#include "unit/Editor/Shapes.h"

#include <QFontDatabase>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using Geometry::Point;
using Kind = AnnotationKind;

namespace {

constexpr Geometry::Size size{60, 40};
constexpr double pictureDensity = 2;

/// A zoom, and a screen's pixels a point. All make whole pixels of the picture's size.
using View = std::pair<double, double>;

class CanvasCrispness : public testing::TestWithParam<View> {
protected:
    CanvasCrispness() { FakePlatform::reset(); }

    static double density() { return GetParam().first * GetParam().second; }

    static QImage shown(const BaseImage& base, const QList<Annotation>& annotations)
    {
        const auto [zoom, ratio] = GetParam();
        CanvasView canvas(base, annotations);
        canvas.setZoom(zoom);
        const QSize pixels(static_cast<int>(std::lround(size.width * density())),
                           static_cast<int>(std::lround(size.height * density())));
        QImage image(canvas.size() * ratio, QImage::Format_RGB32);
        EXPECT_EQ(image.size(), pixels);
        image.setDevicePixelRatio(ratio);
        canvas.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        image.setDevicePixelRatio(1);
        return image;
    }

    static QImage shown(const Annotation& annotation, const QColor& ground)
    {
        return shown(plainPicture(size, pictureDensity, ground), {annotation});
    }
};

INSTANTIATE_TEST_SUITE_P(Views, CanvasCrispness,
                         testing::Values(View{0.5, 1}, View{0.75, 2}, View{1.25, 1}, View{1, 2},
                                         View{3, 1}, View{2, 2}));

/// How much of each pixel a glyph covers, from the font's outline at many times the size. `origin`
/// is its place on the base line, in pixels from the top left.
QImage glyphCoverage(QChar character, double pixelSize, QPointF origin, QSize pixels)
{
    constexpr int samples = 8;
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setBold(true);
    font.setPixelSize(1000);
    font.setHintingPreference(QFont::PreferNoHinting);
    const QRawFont raw = QRawFont::fromFont(font);
    const QPainterPath outline =
        raw.pathForGlyph(raw.glyphIndexesForString(QString(character)).value(0));
    QImage fine(pixels * samples, QImage::Format_Grayscale8);
    fine.fill(0);
    QPainter painter(&fine); // without smooth edges
    painter.scale(samples, samples);
    painter.translate(origin);
    painter.scale(pixelSize / 1000, pixelSize / 1000);
    painter.fillPath(outline, Qt::white);
    painter.end();
    QImage result(pixels, QImage::Format_Grayscale8);
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x) {
            int sum = 0;
            for (int row = 0; row < samples; ++row) {
                const uchar* const line = fine.constScanLine(samples * y + row) + samples * x;
                for (int column = 0; column < samples; ++column)
                    sum += line[column];
            }
            result.scanLine(y)[x] = static_cast<uchar>(sum / (samples * samples));
        }
    }
    return result;
}

/// White on black.
struct Ink {
    double amount = 0; ///< In pixels.
    int soft = 0;      ///< Pixels that are neither white nor black: a blur would make more of them.
};

Ink inkOn(const QImage& image)
{
    Ink ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int light = qGreen(image.pixel(x, y));
            ink.amount += light / 255.0;
            ink.soft += light > 25 && light < 230 ? 1 : 0;
        }
    }
    return ink;
}

} // namespace

TEST_P(CanvasCrispness, EdgesOfMarksAreAsSharpAsTheScreen)
{
    const auto expectShown = [](const Annotation& mark, const Shapes::Distance& shape) {
        expectShape(shown(mark, testGround), density(), shape, QColor(0xFF, 0x3B, 0x30));
    };
    expectShown(markOf(Kind::line, {8, 6}, {50, 33}, 4), Shapes::capsule({8, 6}, {50, 33}, 4));
    expectShown(markOf(Kind::rect, {10, 8}, {45, 30}, 7),
                Shapes::roundedOutline({10, 8, 35, 22}, 2, 7));
    const QList<Point> path{{8, 8}, {30, 30}, {50, 15}};
    expectShown(strokeOf(Kind::freehand, path, 7), Shapes::chain(path, 7));
}

TEST_P(CanvasCrispness, TextIsAsSharpAsTheScreen)
{
    // White on black, where a shadow does not show.
    Annotation counter = markOf(Kind::counter, {30, 20}, {0, 0}, 5, "#000000");
    counter.number = 8;
    Annotation label = markOf(Kind::text, {10, 8}, {0, 0}, 4, "#FFFFFF");
    label.text = QStringLiteral("8");
    label.fontSize = 26;
    for (const auto& [mark, textSize] : {std::pair{counter, 1.1 * 16}, {label, 26.0}}) {
        const Ink seen = inkOn(shown(mark, Qt::black));
        const int side = static_cast<int>(1.2 * textSize * density());
        const Ink wanted =
            inkOn(glyphCoverage(u'8', textSize * density(), {1.3, 0.95 * side}, {side, side}));
        EXPECT_NEAR(seen.amount / wanted.amount, 1, 0.03) << textSize;
        EXPECT_GT(wanted.soft, 10);
        EXPECT_NEAR(seen.soft, wanted.soft, 0.3 * wanted.soft + 6) << textSize;
    }
}

TEST_P(CanvasCrispness, ThePictureIsAveragedWhenReducedAndHasHardEdgesWhenEnlarged)
{
    std::mt19937 random(5);
    QImage pixels(120, 80, QImage::Format_RGB32);
    for (int y = 0; y < pixels.height(); ++y)
        for (int x = 0; x < pixels.width(); ++x)
            pixels.setPixel(x, y, 0xFF000000U | static_cast<QRgb>(random() & 0xFFFFFFU));
    const QImage image = shown(BaseImage::ofDensity(pixels, pictureDensity), {});
    const double factor = density() / pictureDensity;
    if (factor == 1) {
        EXPECT_EQ(image, pixels);
        return;
    }
    // What an old pixel gives to a new one along an axis.
    const auto shares = [factor](int place, int length) {
        std::vector<std::pair<int, double>> result;
        if (factor < 1) { // by how much of it is covered
            for (int i = 0; i < length; ++i) {
                const double from = std::max(place / factor, static_cast<double>(i));
                const double to = std::min((place + 1) / factor, i + 1.0);
                if (to > from)
                    result.emplace_back(i, (to - from) * factor);
            }
            return result;
        }
        const double middle = (place + 0.5) / factor;
        if (factor >= 2) {
            result.emplace_back(static_cast<int>(middle), 1);
            return result;
        }
        const double before = std::clamp(middle - 0.5, 0.0, length - 1.0);
        const int first = static_cast<int>(before);
        result.emplace_back(first, 1 - (before - first));
        result.emplace_back(std::min(first + 1, length - 1), before - first);
        return result;
    };
    for (int y = 0; y < image.height(); y += 3) {
        const auto rows = shares(y, pixels.height());
        for (int x = 0; x < image.width(); ++x) {
            double wanted = 0;
            for (const auto& [column, across] : shares(x, pixels.width()))
                for (const auto& [row, down] : rows)
                    wanted += across * down * qGreen(pixels.pixel(column, row));
            ASSERT_NEAR(qGreen(image.pixel(x, y)), wanted, 3) << x << ", " << y;
        }
    }
}
