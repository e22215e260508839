// Moving and resizing a selection by a real mouse. A recording's selection stays open for it.

#include "desktop/flow/SelectionPicture.h"
#include "desktop/flow/Tamrik.h"
#include "desktop/harness/DesktopTest.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"

#include <gtest/gtest.h>

using namespace Desktop;

namespace {

struct Case {
    const char* name;
    Options options;
};

void PrintTo(const Case& c, std::ostream* out)
{
    *out << c.name;
}

class Adjusting : public testing::TestWithParam<Case> {
protected:
    void SetUp() override
    {
        auto started = VirtualDesktop::start(GetParam().options);
        ASSERT_TRUE(succeeded(started));
        desktop = std::move(*started);
        auto launched = Tamrik::startAndAwaitKeys(*desktop, QStringLiteral(TAMRIK_PROGRAM));
        ASSERT_TRUE(succeeded(launched));
        tamrik = std::move(*launched);
        const auto background = Screen(*desktop).pixel(area().center());
        ASSERT_TRUE(succeeded(background));
        plain = *background;
        ASSERT_TRUE(succeeded(tamrik->pressRecordKey()));
        ASSERT_TRUE(succeeded(drag(area().topLeft(), end(area()))));
        ASSERT_TRUE(succeeded(shows(area())));
    }

    void TearDown() override
    {
        if (tamrik) {
            ASSERT_TRUE(succeeded(input().key(QStringLiteral("Escape"))));
            EXPECT_TRUE(succeeded(tamrik->awaitNoOverlay()));
            EXPECT_TRUE(tamrik->captures().isEmpty());
            EXPECT_EQ(tamrik->app().errorOutput(), QString());
        }
    }

    Input input() const { return Input(*desktop); }
    Outcome<void> drag(QPoint from, QPoint to) const { return input().drag(from, to); }
    Outcome<void> shows(QRect pixels) const { return awaitSelectionOf(*desktop, pixels, plain); }

    /// Where a drag that begins in the top left corner has to end.
    static QPoint end(QRect r) { return r.topLeft() + QPoint(r.width(), r.height()); }
    static QRect area() { return {600, 360, 420, 240}; }

    std::unique_ptr<VirtualDesktop> desktop;
    std::unique_ptr<Tamrik> tamrik;
    QColor plain;
};

} // namespace

TEST_P(Adjusting, TheInsideMovesItAsItIs)
{
    const QPoint inside = area().topLeft() + QPoint(120, 60);
    ASSERT_TRUE(succeeded(drag(inside, inside + QPoint(150, 90))));
    EXPECT_TRUE(succeeded(shows(area().translated(150, 90))));
    // It stops at the screen's edge.
    const QPoint there = inside + QPoint(150, 90);
    ASSERT_TRUE(succeeded(drag(there, {there.x(), 0})));
    const QPoint top(there.x(), 60);
    ASSERT_TRUE(succeeded(drag(top, top + QPoint(0, 300))));
    EXPECT_TRUE(succeeded(shows(QRect(area().x() + 150, 300, area().width(), area().height()))));
}

TEST_P(Adjusting, EachCornerResizesItAndTheOppositeOneStays)
{
    ASSERT_TRUE(succeeded(drag(end(area()), end(area()) + QPoint(90, 60))));
    QRect now = area().adjusted(0, 0, 90, 60);
    EXPECT_TRUE(succeeded(shows(now)));
    ASSERT_TRUE(succeeded(drag(now.topLeft(), now.topLeft() + QPoint(-60, 30))));
    now.adjust(-60, 30, 0, 0);
    EXPECT_TRUE(succeeded(shows(now)));
    const QPoint topRight = now.topLeft() + QPoint(now.width(), 0);
    ASSERT_TRUE(succeeded(drag(topRight, topRight + QPoint(30, -90))));
    now.adjust(0, -90, 30, 0);
    EXPECT_TRUE(succeeded(shows(now)));
    // Past the opposite corner it turns over.
    const QPoint bottomLeft = now.topLeft() + QPoint(0, now.height());
    ASSERT_TRUE(succeeded(drag(bottomLeft, end(now) + QPoint(120, 0))));
    EXPECT_TRUE(succeeded(shows(QRect(now.x() + now.width(), now.y(), 120, now.height()))));
}

TEST_P(Adjusting, APressOutsideStartsAnew)
{
    const QRect other(120, 600, 300, 180);
    ASSERT_TRUE(succeeded(input().moveTo(other.topLeft())));
    ASSERT_TRUE(succeeded(input().press()));
    const QColor dimmed(qRound(plain.red() * 0.75), qRound(plain.green() * 0.75),
                        qRound(plain.blue() * 0.75));
    EXPECT_TRUE(succeeded(Screen(*desktop).awaitColor(area().center(), dimmed, 3)));
    ASSERT_TRUE(succeeded(input().moveTo(end(other))));
    ASSERT_TRUE(succeeded(input().release()));
    EXPECT_TRUE(succeeded(shows(other)));
}

INSTANTIATE_TEST_SUITE_P(
    Adjusting, Adjusting,
    testing::Values(Case{"OpenboxPicom", {}},
                    Case{"ScaleTwoUncomposited",
                         {.scale = 2, .compositor = Compositor::None, .tray = Tray::None}}),
    [](const testing::TestParamInfo<Case>& instance) { return instance.param.name; });
