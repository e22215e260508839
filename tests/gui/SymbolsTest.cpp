#include "Symbols.h"

#include <QImage>
#include <QPainter>
#include <QSet>

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>

using Symbols::Symbol;
using Symbols::Weight;

namespace Symbols {

void PrintTo(Symbol symbol, std::ostream* out)
{
    *out << qPrintable(name(symbol));
}

} // namespace Symbols

namespace {

/// The alpha of a symbol drawn in the middle of a button of 30 by 24 points.
QImage drawn(const Symbols::Image& image, double scale)
{
    QImage picture((QSizeF(30, 24) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    Symbols::draw(painter, image, {15, 12}, Qt::red);
    return picture;
}

/// The sum of all alphas, in whole pixels.
double coverage(const QImage& picture)
{
    double sum = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            sum += picture.pixelColor(x, y).alphaF();
    }
    return sum;
}

class SymbolsTest : public testing::TestWithParam<Symbol> {};

} // namespace

TEST_P(SymbolsTest, FillsItsBoxAndStaysInside)
{
    const QSizeF size = Symbols::size({GetParam(), 120, Weight::regular, {}});
    const QRectF box(QPointF(40, 20), size);
    const QRectF bounds = Symbols::path(GetParam(), box).boundingRect();
    // At this size a tenth of a design point is one point.
    EXPECT_GE(bounds.left(), box.left() - 1.5);
    EXPECT_GE(bounds.top(), box.top() - 1.5);
    EXPECT_LE(bounds.right(), box.right() + 1.5);
    EXPECT_LE(bounds.bottom(), box.bottom() + 1.5);
    EXPECT_GT(bounds.width(), box.width() * 0.85);
    EXPECT_GT(bounds.height(), box.height() * 0.85);
}

TEST_P(SymbolsTest, FitsAnyBoxInTheMiddle)
{
    const QRectF wide(0, 0, 300, 100);
    const QRectF bounds = Symbols::path(GetParam(), wide).boundingRect();
    EXPECT_TRUE(wide.adjusted(-2, -2, 2, 2).contains(bounds));
    EXPECT_GT(bounds.height(), 70);
    const QSizeF size = Symbols::size({GetParam(), 12, Weight::regular, {}});
    EXPECT_LT(bounds.width(), 100 * size.width() / size.height() + 3);
}

TEST_P(SymbolsTest, IsDrawnInTheTintAlone)
{
    const QImage picture =
        drawn({GetParam(), 12, Weight::semibold, {}}, 2).convertToFormat(QImage::Format_ARGB32);
    int inked = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QColor pixel = picture.pixelColor(x, y);
            if (pixel.alpha() < 32)
                continue; // too little to tell a colour from
            ++inked;
            EXPECT_GE(pixel.red(), 247);
            EXPECT_EQ(pixel.green() + pixel.blue(), 0);
        }
    }
    EXPECT_GT(inked, 60);
}

TEST_P(SymbolsTest, GrowsWithTheTextItGoesWith)
{
    const QSizeF twelve = Symbols::size({GetParam(), 12, Weight::semibold, {}});
    const QSizeF eighteen = Symbols::size({GetParam(), 18, Weight::semibold, {}});
    EXPECT_NEAR(eighteen.width(), twelve.width() * 1.5, 1e-9);
    EXPECT_NEAR(eighteen.height(), twelve.height() * 1.5, 1e-9);
    // Made for a button that is 30 by 24.
    EXPECT_LE(twelve.width(), 20);
    EXPECT_LE(twelve.height(), 18);
}

TEST_P(SymbolsTest, LiesInTheMiddleOfAButtonAtEveryScale)
{
    for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        const QImage picture = drawn({GetParam(), 13, Weight::semibold, {}}, scale);
        QRect extent;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.pixelColor(x, y).alpha() > 25)
                    extent |= QRect(x, y, 1, 1);
            }
        }
        EXPECT_NEAR(extent.left() + extent.right() + 1, 30 * scale, 2.5 * scale) << scale;
        EXPECT_NEAR(extent.top() + extent.bottom() + 1, 24 * scale, 2.5 * scale) << scale;
    }
}

INSTANTIATE_TEST_SUITE_P(All, SymbolsTest, testing::ValuesIn(Symbols::allSymbols));

TEST(Symbols, HaveTheNamesOfTheirKind)
{
    QSet<QString> names;
    for (const Symbol symbol : Symbols::allSymbols)
        names.insert(Symbols::name(symbol));
    EXPECT_EQ(names.size(), static_cast<int>(Symbols::allSymbols.size()));
    EXPECT_EQ(Symbols::name(Symbol::oneCircle), QStringLiteral("1.circle"));
    EXPECT_EQ(Symbols::name(Symbol::checkerboardRectangle),
              QStringLiteral("checkerboard.rectangle"));
}

TEST(Symbols, LinesAreHeavierInSemibold)
{
    for (const Symbol symbol : {Symbol::circle, Symbol::xmark, Symbol::trash, Symbol::crop}) {
        EXPECT_GT(coverage(drawn({symbol, 13, Weight::semibold, {}}, 2)),
                  coverage(drawn({symbol, 13, Weight::regular, {}}, 2)) * 1.1)
            << qPrintable(Symbols::name(symbol));
    }
}

TEST(Symbols, HolesStayOpen)
{
    // The middle of a ring, and between two bars.
    for (const Symbol symbol : {Symbol::circle, Symbol::rectangle, Symbol::pauseFill, Symbol::crop})
        EXPECT_EQ(drawn({symbol, 13, Weight::semibold, {}}, 2).pixelColor(30, 24).alpha(), 0)
            << qPrintable(Symbols::name(symbol));
    EXPECT_EQ(drawn({Symbol::stopFill, 13, Weight::semibold, {}}, 2).pixelColor(30, 24).alpha(),
              255);
}

TEST(Symbols, OuterEdgesAreSharpAtEveryScale)
{
    for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        const QImage picture = drawn({Symbol::rectangle, 13, Weight::semibold, {}}, scale);
        // Across the left side, half way down: nothing, then a full pixel.
        const int y = picture.height() / 2;
        int x = 0;
        while (x < picture.width() && picture.pixelColor(x, y).alpha() == 0)
            ++x;
        EXPECT_EQ(picture.pixelColor(x, y).alpha(), 255) << scale;
        const int middle = picture.width() / 2;
        int top = 0;
        while (top < picture.height() && picture.pixelColor(middle, top).alpha() == 0)
            ++top;
        EXPECT_EQ(picture.pixelColor(middle, top).alpha(), 255) << scale;
    }
}

TEST(Symbols, ATurnedPainterTurnsThemToo)
{
    QImage picture(60, 60, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.translate(30, 30);
    painter.rotate(90);
    Symbols::draw(painter, {Symbol::rectangle, 26, Weight::semibold, {}}, {0, 0}, Qt::red);
    // 36 wide and 28 high, lying on its side.
    EXPECT_EQ(picture.pixelColor(30, 13).alpha(), 255);
    EXPECT_EQ(picture.pixelColor(14, 30).alpha(), 0);
}
