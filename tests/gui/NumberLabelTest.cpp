#include "NumberLabel.h"

#include "Chrome.h"
#include "gui/Rendered.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

int widthOf(const char* text)
{
    return NumberLabel(QString::fromUtf8(text), 13).sizeHint().width();
}

} // namespace

TEST(NumberLabel, EveryDigitIsEquallyWide)
{
    EXPECT_EQ(widthOf("1:11"), widthOf("8:00"));
    EXPECT_EQ(widthOf("111 × 111"), widthOf("444 × 888"));
    EXPECT_LT(widthOf("1:11"), widthOf("11:11"));
    EXPECT_LT(widthOf("::"), widthOf("11"));
}

TEST(NumberLabel, ShowsItsTextInTheKitsColourInsideItsBox)
{
    NumberLabel label(QStringLiteral("8"), 13);
    label.resize(label.sizeHint());
    const QImage image = Rendered::at(label, 4);
    int inked = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            inked += image.pixelColor(x, y) == Chrome::textPrimary() ? 1 : 0;
    }
    EXPECT_GT(inked, image.width() * image.height() / 20);
    for (const int y : {0, image.height() - 1}) {
        for (int x = 0; x < image.width(); ++x)
            EXPECT_EQ(image.pixelColor(x, y), Rendered::ground);
    }
}

TEST(NumberLabel, ADigitStandsInTheMiddleOfItsPlace)
{
    NumberLabel label(QStringLiteral("1"), 13);
    label.resize(label.sizeHint());
    const QImage image = Rendered::at(label, 4);
    int left = image.width();
    int right = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != Rendered::ground) {
                left = std::min(left, x);
                right = std::max(right, x);
            }
        }
    }
    EXPECT_NEAR(left, image.width() - 1 - right, 8); // two points, of some nine
}
