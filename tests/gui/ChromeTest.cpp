#include "Chrome.h"

#include "support/Printers.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace {

/// The colour at a share of a gradient, as it fills a box.
QColor colorAt(QLinearGradient gradient, double share)
{
    QImage column(1, 1001, QImage::Format_ARGB32);
    column.fill(Qt::transparent);
    QPainter painter(&column);
    painter.fillRect(column.rect(), gradient);
    return column.pixelColor(0, qRound(share * 1000));
}

void expectNear(const QColor& actual, const char* expected)
{
    const QColor wanted(QLatin1String{expected});
    EXPECT_NEAR(actual.red(), wanted.red(), 1) << expected;
    EXPECT_NEAR(actual.green(), wanted.green(), 1) << expected;
    EXPECT_NEAR(actual.blue(), wanted.blue(), 1) << expected;
    EXPECT_EQ(actual.alpha(), 255);
}

} // namespace

TEST(Chrome, ThePaletteIsWhatItSays)
{
    EXPECT_EQ(Chrome::textPrimary().name(), QStringLiteral("#e9ebee"));
    EXPECT_EQ(Chrome::iconNormal().name(), QStringLiteral("#d5d9de"));
    EXPECT_EQ(Chrome::accentBlue().name(), QStringLiteral("#6fa5ff"));
    EXPECT_EQ(Chrome::border().name(), QStringLiteral("#0e1013"));
    EXPECT_NEAR(Chrome::border().alphaF(), 0.7, 0.002);
    EXPECT_EQ(Chrome::rimLight().name(), QStringLiteral("#ffffff"));
    EXPECT_NEAR(Chrome::rimLight().alphaF(), 0.14, 0.002);
}

TEST(Chrome, GradientsRunFromTheTopEdgeToTheBottomEdge)
{
    using Chrome::Accent;
    struct Row {
        QLinearGradient gradient;
        const char* top;
        double middleAt;
        const char* middle;
        const char* bottom;
    };
    const Row rows[] = {
        {Chrome::barGradient(), "#3E4249", 0.45, "#2C2F35", "#24272C"},
        {Chrome::buttonGradient(Accent::none, false), "#4C5058", 0.55, "#3B3F46", "#33363D"},
        {Chrome::buttonGradient(Accent::none, true), "#25272C", 0.6, "#2C2F35", "#31343B"},
        {Chrome::buttonGradient(Accent::blue, false), "#5E97FF", 0.55, "#3D77E8", "#2F64D6"},
        {Chrome::buttonGradient(Accent::blue, true), "#2A55B4", 0.6, "#3465C8", "#3D77E8"},
        {Chrome::buttonGradient(Accent::red, false), "#FF6B61", 0.55, "#E0453B", "#C93830"},
        {Chrome::buttonGradient(Accent::red, true), "#9E2C25", 0.6, "#B4362E", "#C9443C"},
    };
    for (const Row& row : rows) {
        expectNear(colorAt(row.gradient, 0), row.top);
        expectNear(colorAt(row.gradient, row.middleAt), row.middle);
        expectNear(colorAt(row.gradient, 1), row.bottom);
    }
}

TEST(Chrome, ButtonBorders)
{
    EXPECT_EQ(Chrome::buttonBorder(Chrome::Accent::none).name(), QStringLiteral("#131519"));
    EXPECT_NEAR(Chrome::buttonBorder(Chrome::Accent::none).alphaF(), 0.8, 0.002);
    EXPECT_EQ(Chrome::buttonBorder(Chrome::Accent::blue), QColor(0x1E, 0x4A, 0xA8));
    EXPECT_EQ(Chrome::buttonBorder(Chrome::Accent::red), QColor(0x8E, 0x26, 0x20));
}

TEST(Chrome, ACentredPillStandsAroundItsText)
{
    const auto layout = Chrome::pillLayout(Geometry::Size{60, 15}, {100, 50}, true);
    EXPECT_EQ(layout.textOrigin, (Geometry::Point{70, 50}));
    EXPECT_EQ(layout.pill, (Geometry::Rect{60, 46, 80, 23}));
    EXPECT_EQ(layout.radius, 11.5);
}

TEST(Chrome, APillThatIsNotCentredBeginsAtItsPoint)
{
    const auto layout = Chrome::pillLayout(Geometry::Size{60, 15}, {100, 50}, false);
    EXPECT_EQ(layout.textOrigin, (Geometry::Point{100, 50}));
    EXPECT_EQ(layout.pill, (Geometry::Rect{90, 46, 80, 23}));
}

TEST(Chrome, AMeasuredPillIsTwentyWiderAndEightHigherThanItsText)
{
    const QString text = QStringLiteral("640 × 480");
    const QFontMetricsF metrics(Chrome::font(12));
    const auto layout = Chrome::pillLayout(text, {0, 0}, false);
    EXPECT_DOUBLE_EQ(layout.pill.width, metrics.horizontalAdvance(text) + 20);
    EXPECT_DOUBLE_EQ(layout.pill.height, metrics.height() + 8);
}

TEST(Chrome, ADrawnPillHasItsFillItsBorderAndItsTextInPlace)
{
    QImage image(200, 60, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        const Geometry::Flip flip({0, 0, 200, 60});
        Chrome::drawPill(painter, flip, QStringLiteral("Hello"), {100, 24}, true);
    }
    const auto layout = Chrome::pillLayout(QStringLiteral("Hello"), {100, 24}, true);
    const int top = qCeil(60 - layout.pill.maxY());
    const int bottom = qFloor(60 - layout.pill.minY()) - 1;
    // Inside the left end, beside the text: the bar gradient, lighter at its top.
    const int x = qRound(layout.pill.minX() + layout.pill.height / 2);
    EXPECT_GT(image.pixelColor(x, top + 2).lightness(),
              image.pixelColor(x, bottom - 2).lightness());
    EXPECT_LT(image.pixelColor(x, top + 2).lightness(), 80);
    // Outside: untouched; the corners are round.
    EXPECT_EQ(image.pixelColor(qFloor(layout.pill.minX()) - 2, 30), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(qCeil(layout.pill.minX()), top), QColor(Qt::white));
    // The text is light and centred.
    int first = 200;
    int last = 0;
    for (int px = x; px < 200; ++px) {
        for (int py = top + 3; py < bottom - 3; ++py) {
            if (image.pixelColor(px, py).lightness() > 200 && px < layout.pill.maxX() - 2) {
                first = std::min(first, px);
                last = std::max(last, px);
            }
        }
    }
    EXPECT_NEAR((first + last) / 2.0, 100, 1.5);
}
