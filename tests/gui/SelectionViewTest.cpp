#include "SelectionView.h"

#include "Chrome.h"
#include "support/Printers.h"

#include <QPainter>
#include <QTest>

#include <gtest/gtest.h>

namespace {

/// A view over a backdrop of one colour, where every pixel's place is known.
class SelectionViewTest : public testing::Test {
protected:
    static constexpr int width = 400;
    static constexpr int height = 300;

    SelectionViewTest()
    {
        QPixmap backdrop(width, height);
        backdrop.fill(QColor(200, 200, 200));
        view =
            std::make_unique<SelectionView>(Geometry::Rect{0, 0, width, height},
                                            std::weak_ptr<SelectionSession>(), backdrop, nullptr);
        view->resize(width, height);
    }

    QColor pixel(int x, int y) { return view->grab().toImage().pixelColor(x, y); }

    static void expectGrey(const QColor& c, int value)
    {
        EXPECT_NEAR(c.red(), value, 2);
        EXPECT_NEAR(c.green(), value, 2);
        EXPECT_NEAR(c.blue(), value, 2);
    }

    void dragTo(QPoint from, QPoint to)
    {
        QTest::mousePress(view.get(), Qt::LeftButton, {}, from);
        QTest::mouseMove(view.get(), to);
    }

    std::unique_ptr<SelectionView> view;
};

} // namespace

TEST_F(SelectionViewTest, DimsEverythingWhileNothingIsSelected)
{
    expectGrey(pixel(5, 5), 150);
    expectGrey(pixel(width - 1, height - 1), 150);
}

TEST_F(SelectionViewTest, LeavesTheSelectionAsItIs)
{
    dragTo({100, 100}, {250, 200});
    expectGrey(pixel(100, 100), 200);
    expectGrey(pixel(249, 199), 200);
    expectGrey(pixel(20, 20), 150);
    expectGrey(pixel(300, 150), 150);
}

TEST_F(SelectionViewTest, OutlinesTheSelectionWithOneCrispLine)
{
    dragTo({100, 100}, {250, 200});
    const int mid = 150;
    // 0.85 white over the dimmed grey, just outside the edge; nothing beside it.
    expectGrey(pixel(99, mid), 150 + qRound((255 - 150) * 0.85));
    expectGrey(pixel(98, mid), 150);
    expectGrey(pixel(100, mid), 200);
    expectGrey(pixel(250, mid), 150 + qRound((255 - 150) * 0.85));
    expectGrey(pixel(251, mid), 150);
}

TEST_F(SelectionViewTest, BracketsStandThreePointsOutsideEachCorner)
{
    dragTo({100, 100}, {250, 200});
    for (const QPoint corner : {QPoint(96, 96), QPoint(253, 96), QPoint(96, 203), QPoint(253, 203)})
        expectGrey(pixel(corner.x(), corner.y()), 255);
    expectGrey(pixel(96, 110), 255);
    expectGrey(pixel(96, 125), 150);
    expectGrey(pixel(120, 96), 150);
}

TEST_F(SelectionViewTest, ShowsTheSizeWhileDraggingAndTheInstructionWhileIdle)
{
    const auto darkest = [this](QRect area) {
        const QImage image = view->grab().toImage();
        int value = 255;
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x)
                value = std::min(value, image.pixelColor(x, y).lightness());
        }
        return value;
    };
    // Points of view coordinates; the pills are dark, the rest at least 150.
    const QRect instruction(width / 2 - 20, 80 - 14, 40, 10);
    const QRect label(106, 80, 30, 8);
    EXPECT_LT(darkest(instruction), 80);
    dragTo({100, 100}, {250, 200});
    EXPECT_GE(darkest(instruction), 145);
    EXPECT_LT(darkest(label), 80);
    QTest::mouseRelease(view.get(), Qt::LeftButton, {}, {250, 200});
    EXPECT_GE(darkest(label), 145);
    EXPECT_GE(darkest(instruction), 145);
}

TEST_F(SelectionViewTest, HasAnAccessibleName)
{
    EXPECT_FALSE(view->accessibleName().isEmpty());
}
