#include "Editor/AnnotationRenderer.h"

#include "unit/Editor/Shapes.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Geometry::Point;
using Kind = AnnotationKind;
using namespace Shapes;

const QColor red(0xFF, 0x3B, 0x30);
const Geometry::Size size{120, 80};

struct ArrowParts {
    Distance shaft;
    Distance head;
};

/// Head length, half-width and where the shaft ends follow from the tip, the angle and the
/// width.
ArrowParts arrowParts(Point tail, Point tip, double width, double headLength)
{
    const double angle = std::atan2(tip.y - tail.y, tip.x - tail.x);
    const Point along{std::cos(angle), std::sin(angle)};
    const Point base{tip.x - headLength * along.x, tip.y - headLength * along.y};
    const double half = 0.35 * headLength;
    const Point shaftEnd{tip.x - 0.8 * headLength * along.x, tip.y - 0.8 * headLength * along.y};
    return {capsule(tail, shaftEnd, width),
            triangle(tip, {base.x - half * along.y, base.y + half * along.x},
                     {base.x + half * along.y, base.y - half * along.x})};
}

class DrawnShape : public testing::TestWithParam<double> {
protected:
    static double density() { return GetParam(); }

    static QImage drawn(const QList<Annotation>& annotations)
    {
        return AnnotationRenderer::flattened(plainPicture(size, density()), annotations);
    }

    static void expectDrawn(const Annotation& annotation, const Distance& shape,
                            const QColor& color = red)
    {
        expectShape(drawn({annotation}), density(), shape, color);
    }

    static void expectNothing(const Annotation& annotation)
    {
        EXPECT_EQ(drawn({annotation}), drawn({}));
    }

    static Distance arrowShape(Point tail, Point tip, double width, double headLength)
    {
        const ArrowParts parts = arrowParts(tail, tip, width, headLength);
        return united(parts.shaft, parts.head);
    }
};

INSTANTIATE_TEST_SUITE_P(PixelsAPoint, DrawnShape, testing::Values(1.0, 2.0));

} // namespace

TEST_P(DrawnShape, LineHasRoundEnds)
{
    for (const double width : {2.0, 4.0, 7.0})
        expectDrawn(markOf(Kind::line, {20, 15}, {95, 60}, width),
                    capsule({20, 15}, {95, 60}, width));
    expectDrawn(markOf(Kind::line, {20.5, 40.5}, {90.5, 40.5}, 5),
                capsule({20.5, 40.5}, {90.5, 40.5}, 5));
}

TEST_P(DrawnShape, ArrowOfWidthTwoHasAHeadOfTwelve)
{
    expectDrawn(markOf(Kind::arrow, {15, 12}, {100, 62}, 2),
                arrowShape({15, 12}, {100, 62}, 2, 12));
    expectDrawn(markOf(Kind::arrow, {100, 40}, {20, 40}, 2),
                arrowShape({100, 40}, {20, 40}, 2, 12));
}

TEST_P(DrawnShape, ArrowOfWidthSixHasAHeadOfTwentyOne)
{
    expectDrawn(markOf(Kind::arrow, {20, 62}, {100, 20}, 6),
                arrowShape({20, 62}, {100, 20}, 6, 21));
    expectDrawn(markOf(Kind::arrow, {60, 10}, {60, 70}, 6), arrowShape({60, 10}, {60, 70}, 6, 21));
}

TEST_P(DrawnShape, ArrowWithoutALengthPointsRight)
{
    // The shaft runs back from the tip.
    expectDrawn(markOf(Kind::arrow, {60, 40}, {60, 40}, 6), arrowShape({60, 40}, {60, 40}, 6, 21));
}

TEST(DrawnArrow, TheShaftEndsInsideTheHeadShortOfTheTip)
{
    // Under a translucent painter it is seen where one lies over the other.
    constexpr double density = 8;
    const struct {
        Point tail;
        Point tip;
        double width;
        double headLength;
    } arrows[] = {
        {{10, 10}, {60, 12}, 2, 12}, {{60, 40}, {10, 25}, 6, 21}, {{5, 30}, {75, 9}, 12, 42}};
    for (const auto& [tail, tip, width, headLength] : arrows) {
        const BaseImage base = plainPicture({80, 50}, density, Qt::white);
        QImage image = base.pixels;
        QPainter painter(&image);
        painter.scale(density, density);
        painter.setOpacity(0.5);
        AnnotationRenderer::draw(painter, Geometry::Flip({0, 0, 80, 50}),
                                 markOf(Kind::arrow, tail, tip, width, "#000000"), base);
        painter.end();
        const auto [shaft, head] = arrowParts(tail, tip, width, headLength);
        int twice = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const Point p{(x + 0.5) / density, (image.height() - y - 0.5) / density};
                if (std::abs(shaft(p)) < 1 / density || std::abs(head(p)) < 1 / density)
                    continue;
                const bool isTwice = shaft(p) < 0 && head(p) < 0;
                const double darkness = isTwice ? 0.75 : shaft(p) < 0 || head(p) < 0 ? 0.5 : 0;
                ASSERT_NEAR(image.pixelColor(x, y).red(), 255 * (1 - darkness), 2)
                    << width << " wide, at " << p.x << ", " << p.y;
                twice += isTwice ? 1 : 0;
            }
        }
        EXPECT_GT(twice, 100) << width;
    }
}

TEST_P(DrawnShape, RectangleHasCornersOfTwoPointsAndIsNotFilled)
{
    const Geometry::Rect rect{20, 15, 70, 45};
    for (const double width : {2.0, 7.0}) {
        const Distance shape = roundedOutline(rect, 2, width);
        expectDrawn(markOf(Kind::rect, {20, 15}, {90, 60}, width), shape);
        expectDrawn(markOf(Kind::rect, {90, 15}, {20, 60}, width), shape);
    }
}

TEST_P(DrawnShape, RectangleWithoutAWidthIsALine)
{
    expectDrawn(markOf(Kind::rect, {50, 15}, {50, 60}, 4), capsule({50, 15}, {50, 60}, 4));
    expectDrawn(markOf(Kind::ellipse, {20, 30}, {80, 30}, 4), capsule({20, 30}, {80, 30}, 4));
}

TEST_P(DrawnShape, EllipseTouchesItsRectangleAndIsNotFilled)
{
    for (const double width : {2.0, 7.0})
        expectDrawn(markOf(Kind::ellipse, {95, 60}, {20, 15}, width),
                    ellipseOutline({20, 15, 75, 45}, width));
}

TEST_P(DrawnShape, FreehandIsStraightFromPointToPoint)
{
    const QList<Point> path{{15, 15}, {40, 60}, {60, 20}, {100, 50}};
    for (const double width : {2.0, 7.0})
        expectDrawn(strokeOf(Kind::freehand, path, width), chain(path, width));
}

TEST_P(DrawnShape, StrokeThatStaysInPlaceIsADot)
{
    expectDrawn(strokeOf(Kind::freehand, {{40, 30}, {40, 30}, {40, 30}}, 7), disc({40, 30}, 3.5));
    expectDrawn(markOf(Kind::line, {40, 30}, {40, 30}, 7), disc({40, 30}, 3.5));
    expectDrawn(markOf(Kind::ellipse, {40, 30}, {40, 30}, 7), disc({40, 30}, 3.5));
    expectDrawn(markOf(Kind::rect, {40, 30}, {40, 30}, 7), disc({40, 30}, 3.5));
}

TEST_P(DrawnShape, StrokeOfFewerThanTwoPointsIsNothing)
{
    for (const Kind kind : {Kind::freehand, Kind::highlight}) {
        expectNothing(markOf(kind, {10, 10}, {60, 60}, 7));
        expectNothing(strokeOf(kind, {}, 7));
        expectNothing(strokeOf(kind, {{30, 30}}, 7));
    }
}

TEST_P(DrawnShape, HighlightIsWideAndMultiplies)
{
    const QList<Point> path{{25, 40}, {60, 42}, {95, 36}};
    // Yellow at 0.45: c = ground * (0.55 + 0.45 * yellow / 255).
    const auto multiplied = [](int ground, int mark) {
        return static_cast<int>(std::lround(ground * (0.55 + 0.45 * mark / 255)));
    };
    const QColor color(multiplied(testGround.red(), 0xFF), multiplied(testGround.green(), 0xCC),
                       multiplied(testGround.blue(), 0x00));
    for (const double width : {2.0, 7.0})
        expectDrawn(strokeOf(Kind::highlight, path, width, "#FFCC00"), chain(path, width * 4.5),
                    color);
}

TEST_P(DrawnShape, HighlightThatCrossesItselfIsNotDarker)
{
    const QImage image = drawn(
        {strokeOf(Kind::highlight, {{20, 20}, {90, 60}, {90, 20}, {20, 60}, {20, 20}, {90, 60}}, 4,
                  "#FF0000")});
    EXPECT_EQ(colorAt(image, density(), {55, 40}), colorAt(image, density(), {30, 25.7}));
    EXPECT_NE(colorAt(image, density(), {55, 40}), testGround);
}

TEST_P(DrawnShape, HighlightLeavesTheBlendingOfLaterMarksAlone)
{
    const Annotation line = markOf(Kind::line, {20, 70}, {90, 70}, 4, "#FFFFFF");
    const QImage image = drawn({strokeOf(Kind::highlight, {{20, 20}, {90, 20}}, 4), line});
    EXPECT_EQ(colorAt(image, density(), {50, 70}), QColor(255, 255, 255));
}

TEST_P(DrawnShape, NothingIsThinnerThanAHairline)
{
    for (const double width : {0.0, -3.0}) {
        const QImage image = drawn({markOf(Kind::line, {20, 40.5}, {90, 40.5}, width)});
        EXPECT_NE(image, drawn({}));
        EXPECT_EQ(colorAt(image, density(), {50, 43}), testGround);
    }
}

TEST_P(DrawnShape, LaterMarksAreAbove)
{
    const Annotation first = markOf(Kind::line, {20, 40}, {90, 40}, 8, "#0A84FF");
    const Annotation second = markOf(Kind::line, {50, 10}, {50, 70}, 8, "#34C759");
    EXPECT_EQ(colorAt(drawn({first, second}), density(), {50, 40}), QColor(0x34, 0xC7, 0x59));
    EXPECT_EQ(colorAt(drawn({second, first}), density(), {50, 40}), QColor(0x0A, 0x84, 0xFF));
}

TEST_P(DrawnShape, NumbersOfAnySizeDoNoHarm)
{
    for (const double far : {1e6, 1e19, 1.7e308}) {
        for (int kind = 0; kind < 9; ++kind) {
            Annotation mark = markOf(static_cast<Kind>(kind), {-far, -far / 3}, {far, far}, far);
            mark.path = QList<Point>{mark.start, mark.end, {far, -far}};
            mark.text = QStringLiteral("text");
            mark.fontSize = far;
            EXPECT_FALSE(drawn({mark}).isNull());
            mark.lineWidth = -far;
            mark.fontSize = -far;
            EXPECT_FALSE(drawn({mark}).isNull());
        }
    }
}
