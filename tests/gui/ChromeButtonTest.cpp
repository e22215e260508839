#include "ChromeButton.h"

#include "gui/Rendered.h"

#include <QAccessible>
#include <QFontMetricsF>
#include <QSignalSpy>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>

using Chrome::Accent;
using Symbols::Symbol;
using Symbols::Weight;

namespace {

Symbols::Image image(Symbol symbol, double pointSize = 12)
{
    return {symbol, pointSize, Weight::semibold, QStringLiteral("Described")};
}

struct Look {
    Accent accent;
    bool pressed;
    Stops gradient;
    const char* border;
    double borderAlpha;
    QColor line;
    double lineAlpha;

    friend void PrintTo(const Look& look, std::ostream* out)
    {
        *out << "accent " << static_cast<int>(look.accent) << (look.pressed ? " pressed" : "");
    }
};

class ChromeButtonLook : public testing::TestWithParam<Look> {};

/// The smallest box of the pixels that have exactly `tint`.
QRect extentOf(const QImage& picture, const QColor& tint)
{
    QRect extent;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y) == tint)
                extent |= QRect(x, y, 1, 1);
        }
    }
    return extent;
}

/// A button whose symbol fills a square, to see its place and its colour.
QImage square(Accent accent, bool toggledOn, double scale)
{
    ChromeButton button(image(Symbol::stopFill));
    button.resize(button.sizeHint());
    button.setAccent(accent);
    if (toggledOn)
        button.setToggledOn(true);
    return Rendered::at(button, scale);
}

} // namespace

TEST_P(ChromeButtonLook, IsDrawnByTheKitsNumbers)
{
    const Look& look = GetParam();
    ChromeButton button(image(Symbol::stopFill));
    button.setAccent(look.accent);
    button.setDown(look.pressed);
    button.resize(30, 24);
    const QImage picture = Rendered::at(button, 1);
    // The gradient spans the inset box, 23 points high; x = 8 is beside the symbol.
    for (const int y : {2, 8, 13, 20, 22})
        expectColor(picture, {8, y}, look.gradient.at(y / 23.0));
    // The line along the top reaches half way into the second row.
    expectColor(picture, {15, 1}, mixed(look.gradient.at(1 / 23.0), look.line, look.lineAlpha / 2));
    const QColor below = mixed(Rendered::ground, look.gradient.at(12 / 23.0), 0.5);
    const QColor edge = mixed(below, QLatin1String{look.border}, look.borderAlpha);
    expectColor(picture, {0, 12}, edge);
    expectColor(picture, {29, 12}, edge);
}

INSTANTIATE_TEST_SUITE_P(All, ChromeButtonLook,
                         testing::Values(Look{Accent::none,
                                              false,
                                              {"#4C5058", 0.55, "#3B3F46", "#33363D"},
                                              "#131519",
                                              0.8,
                                              Qt::white,
                                              0.16},
                                         Look{Accent::none,
                                              true,
                                              {"#25272C", 0.6, "#2C2F35", "#31343B"},
                                              "#131519",
                                              0.8,
                                              Qt::black,
                                              0.35},
                                         Look{Accent::blue,
                                              false,
                                              {"#5E97FF", 0.55, "#3D77E8", "#2F64D6"},
                                              "#1E4AA8",
                                              1,
                                              Qt::white,
                                              0.28},
                                         Look{Accent::blue,
                                              true,
                                              {"#2A55B4", 0.6, "#3465C8", "#3D77E8"},
                                              "#1E4AA8",
                                              1,
                                              Qt::black,
                                              0.35},
                                         Look{Accent::red,
                                              false,
                                              {"#FF6B61", 0.55, "#E0453B", "#C93830"},
                                              "#8E2620",
                                              1,
                                              Qt::white,
                                              0.28},
                                         Look{Accent::red,
                                              true,
                                              {"#9E2C25", 0.6, "#B4362E", "#C9443C"},
                                              "#8E2620",
                                              1,
                                              Qt::black,
                                              0.35}));

TEST(ChromeButton, SwitchedOnLooksPressedInBlueInk)
{
    const QImage picture = square(Accent::none, true, 1);
    const Stops sunken = {"#25272C", 0.6, "#2C2F35", "#31343B"};
    expectColor(picture, {5, 2}, sunken.at(2 / 23.0));
    expectColor(picture, {15, 1}, mixed(sunken.at(1 / 23.0), Qt::black, 0.35 / 2));
    EXPECT_EQ(picture.pixelColor(15, 12), Chrome::accentBlue());
}

TEST(ChromeButton, ABlueOneSwitchedOnKeepsWhiteInk)
{
    const QImage picture = square(Accent::blue, true, 1);
    const Stops sunken = {"#2A55B4", 0.6, "#3465C8", "#3D77E8"};
    expectColor(picture, {5, 8}, sunken.at(8 / 23.0));
    EXPECT_EQ(picture.pixelColor(15, 12), QColor(Qt::white));
}

TEST(ChromeButton, InkGoesWithTheAccent)
{
    EXPECT_EQ(square(Accent::none, false, 1).pixelColor(15, 12), Chrome::iconNormal());
    EXPECT_EQ(square(Accent::blue, false, 1).pixelColor(15, 12), QColor(Qt::white));
    EXPECT_EQ(square(Accent::red, false, 1).pixelColor(15, 12), QColor(Qt::white));
}

TEST(ChromeButton, TheSymbolStandsInTheMiddleOnWholePixels)
{
    EXPECT_EQ(extentOf(square(Accent::none, false, 1), Chrome::iconNormal()), QRect(10, 7, 10, 10));
    EXPECT_EQ(extentOf(square(Accent::none, false, 2), Chrome::iconNormal()),
              QRect(20, 14, 20, 20));
}

TEST(ChromeButton, TheTitleStandsInTheMiddle)
{
    ChromeButton button(QStringLiteral("OHHO"));
    button.resize(button.sizeHint() + QSize(40, 10));
    const QImage picture = Rendered::at(button, 2);
    // Letters without ascenders or descenders: they are centred, give or take their line's spacing.
    QRect extent;
    for (int y = 8; y < picture.height() - 8; ++y) {
        for (int x = 8; x < picture.width() - 8; ++x) {
            if (picture.pixelColor(x, y).lightness() > 150)
                extent |= QRect(x, y, 1, 1);
        }
    }
    EXPECT_NEAR(extent.left() + extent.right() + 1, picture.width(), 3);
    EXPECT_NEAR(extent.top() + extent.bottom() + 1, picture.height(), 4);
}

TEST(ChromeButton, HasCornersOfSixPointsOrHalfItsHeight)
{
    ChromeButton button(QStringLiteral("Title"));
    button.resize(60, 24);
    expectRounded(Rendered::at(button, 2), QSizeF(60, 24), 6, 2);
    button.resize(60, 10);
    expectRounded(Rendered::at(button, 2), QSizeF(60, 10), 4.5, 2);
}

TEST(ChromeButton, AnImageButtonIsThirtyByTwentyFourWhateverTheImage)
{
    EXPECT_EQ(ChromeButton(image(Symbol::xmark, 6)).intrinsicContentSize(), QSize(30, 24));
    EXPECT_EQ(ChromeButton(image(Symbol::trash, 40)).intrinsicContentSize(), QSize(30, 24));
}

TEST(ChromeButton, ATitleButtonIsTwentyTwoWiderThanItsTitle)
{
    const ChromeButton button(QStringLiteral("Save Trimmed"));
    const double title =
        QFontMetricsF(Chrome::font(12)).horizontalAdvance(QStringLiteral("Save Trimmed"));
    EXPECT_EQ(button.intrinsicContentSize(), QSize(static_cast<int>(std::ceil(title)) + 22, 24));
    EXPECT_EQ(button.sizeHint(), button.intrinsicContentSize());
}

TEST(ChromeButton, ThePressedLookFollowsTheMouse)
{
    ChromeButton button(QStringLiteral("Title"));
    button.resize(60, 24);
    button.show();
    const QImage before = Rendered::at(button, 1);
    QTest::mousePress(&button, Qt::LeftButton, {}, QPoint(30, 12));
    EXPECT_NE(Rendered::at(button, 1), before);
    QTest::mouseMove(&button, QPoint(300, 12));
    EXPECT_EQ(Rendered::at(button, 1), before);
    QTest::mouseMove(&button, QPoint(30, 12));
    QSignalSpy clicked(&button, &QAbstractButton::clicked);
    QTest::mouseRelease(&button, Qt::LeftButton, {}, QPoint(30, 12));
    EXPECT_EQ(clicked.count(), 1);
    EXPECT_EQ(Rendered::at(button, 1), before);
}

TEST(ChromeButton, AClickDoesNotSwitchIt)
{
    ChromeButton button(image(Symbol::micFill));
    button.setToggledOn(false);
    button.click();
    EXPECT_FALSE(button.isToggledOn());
    button.setToggledOn(true);
    button.click();
    EXPECT_TRUE(button.isToggledOn());
}

TEST(ChromeButton, TakesNoKeyboardFocus)
{
    EXPECT_EQ(ChromeButton(QStringLiteral("Title")).focusPolicy(), Qt::NoFocus);
}

TEST(ChromeButton, TellsAScreenReaderItsNameAndItsState)
{
    ChromeButton plain(QStringLiteral("Export ⌘S"));
    const QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(&plain);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->text(QAccessible::Name), QStringLiteral("Export ⌘S"));
    EXPECT_FALSE(reader->state().checkable);

    ChromeButton toggle(image(Symbol::micFill));
    toggle.setToggledOn(true);
    reader = QAccessible::queryAccessibleInterface(&toggle);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->text(QAccessible::Name), QStringLiteral("Described"));
    EXPECT_TRUE(reader->state().checkable);
    EXPECT_TRUE(reader->state().checked);
}
