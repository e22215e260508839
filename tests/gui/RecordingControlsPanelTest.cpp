#include "RecordingControlsPanel.h"

#include "ChromeButton.h"
#include "NumberLabel.h"
#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "gui/Rendered.h"
#include "support/Printers.h"

#include <QTest>

#include <gtest/gtest.h>

#include <cmath>

using namespace std::chrono_literals;
using Geometry::Point;
using Geometry::Rect;
using Symbols::Symbol;

namespace {

const QColor red(0xFF, 0x3B, 0x30);
const QColor orange(0xFF, 0x95, 0x00);

class RecordingControlsPanelTest : public testing::Test {
protected:
    RecordingControlsPanelTest() { FakePlatform::reset(); }

    RecordingControlsPanel& make(Rect near = {400, 300, 500, 200})
    {
        const auto note = [this](const char* what) {
            return [this, what] { notes += QString::fromLatin1(what); };
        };
        panel = std::make_unique<RecordingControlsPanel>(
            near, clock.clock(),
            RecordingControlsPanel::Callbacks{.isPaused = [this] { return paused; },
                                              .elapsed = [this] { return elapsed; },
                                              .onPauseResume = note("pause"),
                                              .onStop = note("stop"),
                                              .onRestart = note("restart"),
                                              .onDelete = note("delete")});
        panel->orderFrontRegardless();
        return *panel;
    }

    QList<ChromeButton*> buttons() const { return panel->findChildren<ChromeButton*>(); }
    QString time() const { return panel->findChild<NumberLabel*>()->text(); }

    /// In the middle of the dot.
    QColor dot() const
    {
        const auto* bar = panel->findChild<ChromeBarView*>();
        return Rendered::at(*panel, 1).pixelColor(bar->geometry().topLeft() + QPoint(17, 20));
    }

    FakeClock clock;
    bool paused = false;
    double elapsed = 0;
    QStringList notes;
    std::unique_ptr<RecordingControlsPanel> panel;
};

} // namespace

TEST_F(RecordingControlsPanelTest, ItNeverTakesTheKeyboardAndIsAboveOrdinaryWindows)
{
    make();
    const auto traits = FakePlatform::current().traits[panel.get()];
    EXPECT_EQ(traits.level, Platform::WindowLevel::StatusPanel);
    EXPECT_TRUE(traits.nonActivating);
    EXPECT_TRUE(traits.translucent);
    EXPECT_EQ(FakePlatform::current().front.back(), panel.get());
    for (const ChromeButton* button : buttons())
        EXPECT_EQ(button->focusPolicy(), Qt::NoFocus);
}

TEST_F(RecordingControlsPanelTest, FourButtonsEachWithItsSymbolAndMeaning)
{
    make();
    const std::array wanted = {
        std::tuple{Symbol::pauseFill, "Pause / resume", Chrome::Accent::none},
        std::tuple{Symbol::stopFill, "Stop & save (⌥⇧R)", Chrome::Accent::red},
        std::tuple{Symbol::arrowCounterclockwise, "Restart recording (discard so far)",
                   Chrome::Accent::none},
        std::tuple{Symbol::trash, "Discard recording", Chrome::Accent::none}};
    ASSERT_EQ(buttons().size(), 4);
    for (int i = 0; i < 4; ++i) {
        const auto& [symbol, meaning, accent] = wanted.at(static_cast<std::size_t>(i));
        const ChromeButton& button = *buttons().at(i);
        ASSERT_TRUE(button.image());
        EXPECT_EQ(button.image()->symbol, symbol);
        EXPECT_EQ(button.image()->pointSize, 12);
        EXPECT_EQ(button.image()->weight, Symbols::Weight::semibold);
        EXPECT_EQ(button.toolTip(), QString::fromUtf8(meaning));
        EXPECT_EQ(button.accessibleName(), QString::fromUtf8(meaning));
        EXPECT_EQ(button.accent(), accent);
        EXPECT_GT(button.x(), i == 0 ? 0 : buttons().at(i - 1)->geometry().right());
    }
}

TEST_F(RecordingControlsPanelTest, EachButtonDoesItsOneThing)
{
    make();
    for (ChromeButton* button : buttons())
        QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(notes.join(u' '), QStringLiteral("pause stop restart delete"));
}

TEST_F(RecordingControlsPanelTest, ItIsAsLargeAsItsContentAndStandsBelowTheRectangle)
{
    make();
    const auto* bar = panel->findChild<ChromeBarView*>();
    EXPECT_EQ(bar->height(), 40);
    // Dot, time, lines and buttons, eight points between any two of them.
    const int time = panel->findChild<NumberLabel*>()->width();
    EXPECT_EQ(bar->width(), 14 + 8 + time + 2 + 3 * 30 + 2 + 30 + 7 * 8 + 10);
    EXPECT_EQ(panel->frame(),
              (Rect{650 - bar->width() / 2.0, 300 - 14 - 40, double(bar->width()), 40}));
    // The window has room for a shadow, and none of it is over the rectangle.
    const Rect window = FakePlatform::current().frames[panel.get()];
    EXPECT_EQ(window, panel->frame().grown(14));
    EXPECT_LE(window.maxY(), 300);
    EXPECT_EQ(FakePlatform::current().bodies[panel.get()], bar->geometry());
}

TEST_F(RecordingControlsPanelTest, AboveTheRectangleItsShadowDoesNotReachItEither)
{
    make({400, 0, 500, 200});
    EXPECT_EQ(panel->frame().y, 214);
    EXPECT_GE(FakePlatform::current().frames[panel.get()].minY(), 200);
}

TEST_F(RecordingControlsPanelTest, TellsTheTimeEveryThirdOfASecond)
{
    make();
    elapsed = 65.9;
    clock.advance(299ms);
    EXPECT_EQ(time(), QStringLiteral("0:00"));
    clock.advance(1ms);
    EXPECT_EQ(time(), QStringLiteral("1:05"));
    elapsed = 66;
    clock.advance(300ms);
    EXPECT_EQ(time(), QStringLiteral("1:06"));
    elapsed = 0; // a restart
    clock.advance(300ms);
    EXPECT_EQ(time(), QStringLiteral("0:00"));
}

TEST_F(RecordingControlsPanelTest, ALongerTimeGetsMoreRoom)
{
    make();
    const Rect before = panel->frame();
    elapsed = 600;
    clock.advance(300ms);
    EXPECT_GT(panel->frame().width, before.width);
    EXPECT_EQ(panel->frame().origin(), before.origin());
    EXPECT_EQ(FakePlatform::current().frames[panel.get()], panel->frame().grown(14));
    EXPECT_EQ(panel->findChild<NumberLabel*>()->width(),
              panel->findChild<NumberLabel*>()->sizeHint().width());
    EXPECT_EQ(FakePlatform::current().bodies[panel.get()],
              panel->findChild<ChromeBarView*>()->geometry());
}

TEST_F(RecordingControlsPanelTest, ShowsWhetherItIsPaused)
{
    make();
    ChromeButton& button = *buttons().front();
    EXPECT_EQ(dot(), red);
    paused = true;
    clock.advance(300ms);
    EXPECT_EQ(dot(), orange);
    EXPECT_EQ(button.image()->symbol, Symbol::playFill);
    EXPECT_EQ(button.image()->pointSize, 13);
    EXPECT_EQ(button.accessibleName(), QStringLiteral("Resume"));
    EXPECT_EQ(button.toolTip(), QStringLiteral("Pause / resume"));
    paused = false;
    clock.advance(300ms);
    EXPECT_EQ(dot(), red);
    EXPECT_EQ(button.image()->symbol, Symbol::pauseFill);
    EXPECT_EQ(button.accessibleName(), QStringLiteral("Pause"));
}

TEST_F(RecordingControlsPanelTest, NoTimeIsToldAfterItIsStoppedOrClosed)
{
    make();
    elapsed = 5;
    panel->stopTimer();
    clock.advance(1s);
    EXPECT_EQ(time(), QStringLiteral("0:00"));
    make();
    panel->close();
    clock.advance(1s);
    EXPECT_EQ(time(), QStringLiteral("0:00"));
    make();
    panel.reset();
    clock.advance(1s);
}

TEST_F(RecordingControlsPanelTest, ADragOfItsBackgroundMovesIt)
{
    make();
    const Rect before = panel->frame();
    auto* label = panel->findChild<NumberLabel*>();
    FakePlatform::current().mouse = {700, 260};
    QTest::mousePress(label, Qt::LeftButton, {}, {2, 2});
    FakePlatform::current().mouse = {720, 310};
    QTest::mouseMove(label, {22, 2});
    EXPECT_EQ(panel->frame(), before.translated(20, 50));
    EXPECT_EQ(FakePlatform::current().frames[panel.get()], panel->frame().grown(14));
    FakePlatform::current().mouse = {725, 300};
    QTest::mouseMove(label, {27, 12});
    EXPECT_EQ(panel->frame(), before.translated(25, 40));
    QTest::mouseRelease(label, Qt::LeftButton);
    FakePlatform::current().mouse = {0, 0};
    QTest::mouseMove(label, {3, 3});
    EXPECT_EQ(panel->frame(), before.translated(25, 40));
    EXPECT_TRUE(notes.isEmpty());
}

TEST_F(RecordingControlsPanelTest, WithoutAScreenItStaysWhereItIs)
{
    FakePlatform::current().screens.clear();
    make();
    EXPECT_EQ(panel->frame().origin(), Point());
}

TEST_F(RecordingControlsPanelTest, ComesBackFromAScreenThatIsGone)
{
    const auto first = FakePlatform::current().screens;
    auto both = first;
    both.push_back({.name = QStringLiteral("B"),
                    .frame = {1440, 0, 1280, 800},
                    .visibleFrame = {1440, 0, 1280, 800},
                    .scale = 1,
                    .handle = nullptr});
    FakePlatform::current().screens = both;
    make({2000, 300, 300, 200});
    auto* label = panel->findChild<NumberLabel*>();
    QTest::mousePress(label, Qt::LeftButton, {}, {2, 2});
    FakePlatform::current().mouse = {30, 40};
    QTest::mouseMove(label, {32, 2});
    QTest::mouseRelease(label, Qt::LeftButton);
    const Rect there = panel->frame();
    ASSERT_GT(there.x, 1440);
    FakePlatform::current().changeScreens(both); // another change
    clock.advance(200ms);
    EXPECT_EQ(panel->frame(), there);
    FakePlatform::current().changeScreens(first);
    clock.advance(199ms);
    EXPECT_EQ(panel->frame(), there);
    clock.advance(1ms);
    EXPECT_EQ(panel->frame().maxY(), 300 - 14);
    EXPECT_EQ(panel->frame().maxX(), 1440 - 12);
}
