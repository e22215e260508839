#include "ChromeViews.h"

#include "SoftShadow.h"
#include "gui/Rendered.h"

#include <QPainter>

#include <gtest/gtest.h>

// Expected colours are worked out from the kit's numbers: gradient stops over the inset box, lines
// of one point mixed in by their alpha and by how much of a pixel they cover.

namespace {

constexpr Stops bar = {"#3E4249", 0.45, "#2C2F35", "#24272C"};
const QColor border(0x0E, 0x10, 0x13);
const QColor ground = Rendered::ground;

} // namespace

TEST(ChromeBarView, FloatsWithTwelvePointCornersUnlessToldOtherwise)
{
    const ChromeBarView view;
    EXPECT_EQ(view.cornerRadius(), 12);
    EXPECT_FALSE(view.isFlat());
}

TEST(ChromeBarView, AFloatingBarIsLitFromAbove)
{
    ChromeBarView view;
    view.resize(100, 40);
    const QImage image = Rendered::at(view, 1);
    for (const int y : {2, 10, 17, 30, 38})
        expectColor(image, {50, y}, bar.at(y / 39.0));
}

TEST(ChromeBarView, AFloatingBarHasABorderAndARimOfLight)
{
    ChromeBarView view;
    view.resize(100, 40);
    const QImage image = Rendered::at(view, 1);
    // The stroke of a point lies in the outermost pixels, the fill below it covers half of each.
    const QColor edge = mixed(mixed(ground, bar.at(20 / 39.0), 0.5), border, 0.7);
    expectColor(image, {0, 20}, edge);
    expectColor(image, {99, 20}, edge);
    expectColor(image, {50, 39}, mixed(mixed(ground, bar.at(1), 0.5), border, 0.7));
    // The rim reaches half way into the second row.
    expectColor(image, {50, 1}, mixed(bar.at(1 / 39.0), Qt::white, 0.14 / 2));
}

TEST(ChromeBarView, RoundsItsCorners)
{
    ChromeBarView view;
    view.resize(100, 40);
    expectRounded(Rendered::at(view, 2), QSizeF(100, 40), 12, 2);
    view.setCornerRadius(4);
    expectRounded(Rendered::at(view, 2), QSizeF(100, 40), 4, 2);
}

TEST(ChromeBarView, AFlatBarHasSquareCornersAndHairlines)
{
    ChromeBarView view;
    view.setFlat(true);
    view.resize(100, 46);
    const QImage image = Rendered::at(view, 1);
    for (const int x : {0, 50, 99}) {
        expectColor(image, {x, 0}, mixed(bar.at(0.5 / 46), Qt::white, 0.14));
        expectColor(image, {x, 1}, bar.at(1.5 / 46));
        expectColor(image, {x, 23}, bar.at(23.5 / 46));
        expectColor(image, {x, 44}, bar.at(44.5 / 46));
        expectColor(image, {x, 45}, mixed(bar.at(45.5 / 46), border, 0.7));
    }
}

TEST(ChromePillView, HasSemicircularEnds)
{
    ChromePillView view;
    view.resize(60, 18);
    const QImage image = Rendered::at(view, 2);
    expectRounded(image, QSizeF(60, 18), 8.5, 2);
    for (const int y : {6, 17, 30})
        expectColor(image, {60, y}, bar.at(((y + 0.5) / 2 - 0.5) / 17));
}

TEST(ChromeSeparator, IsTwoPointsWideWhateverTheRoom)
{
    const ChromeSeparator separator(20);
    EXPECT_EQ(separator.minimumSize(), QSize(2, 20));
    EXPECT_EQ(separator.maximumSize(), QSize(2, 20));
}

TEST(ChromeSeparator, IsAHairlineInTheMiddle)
{
    ChromeSeparator separator(20);
    const QImage image = Rendered::at(separator, 2);
    const QColor line = mixed(ground, Qt::white, 0.12);
    for (const int y : {0, 20, 39}) {
        expectColor(image, {0, y}, ground);
        expectColor(image, {1, y}, line);
        expectColor(image, {2, y}, line);
        expectColor(image, {3, y}, ground);
    }
}

TEST(SoftShadow, GetsFainterWithEveryPixelOnEverySide)
{
    constexpr int reach = static_cast<int>(SoftShadow::reach);
    const QRect body(reach, reach, 60, 40);
    QImage image(60 + 2 * reach, 40 + 2 * reach, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    SoftShadow::paint(painter, body, 12);
    painter.end();
    const auto alpha = [&](QPoint p) { return qAlpha(image.pixel(p)); };
    struct Side {
        const char* name;
        QPoint edge; // the first pixel outside the body
        QPoint outwards;
    };
    for (const Side& side : {Side{"below", {body.center().x(), body.bottom() + 1}, {0, 1}},
                             Side{"above", {body.center().x(), body.top() - 1}, {0, -1}},
                             Side{"left", {body.left() - 1, body.center().y()}, {-1, 0}}})
    {
        SCOPED_TRACE(side.name);
        int before = 255;
        int pixels = 0;
        for (QPoint p = side.edge; image.rect().contains(p) && before > 3; p += side.outwards) {
            EXPECT_LT(alpha(p), before) << pixels;
            before = alpha(p);
            ++pixels;
        }
        EXPECT_LE(before, 3); // it ends before the window does
        EXPECT_GE(pixels, 7);
    }
    EXPECT_GT(alpha({body.center().x(), body.bottom() + 1}),
              2 * alpha({body.center().x(), body.top() - 1}));
}
