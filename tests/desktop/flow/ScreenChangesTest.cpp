// Screens that come, go and change while the overlay is open.

#include "desktop/flow/Arrangement.h"
#include "desktop/flow/CaptureChecks.h"
#include "desktop/flow/Tamrik.h"
#include "desktop/harness/Commands.h"
#include "desktop/harness/DesktopTest.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/PatternedBackground.h"

#include <gtest/gtest.h>

using namespace Desktop;

namespace {

const ArrangedScreen first{QStringLiteral("first"), {0, 0, 801, 603}, 1};
const ArrangedScreen second{QStringLiteral("second"), {801, 40, 505, 403}, 1};
const ArrangedScreen third{QStringLiteral("third"), {801, 443, 411, 307}, 1};

/// Without a compositor, where a window's frozen backdrop could show our own old overlay.
class ScreenChanges : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        auto started = VirtualDesktop::start({.windowManager = WindowManager::None,
                                              .compositor = Compositor::None,
                                              .tray = Tray::None,
                                              .size = {1400, 800}});
        ASSERT_TRUE(succeeded(started));
        desktop = std::move(*started);
        ASSERT_TRUE(succeeded(PatternedBackground::paint(*desktop)));
    }
    static void TearDownTestSuite() { desktop.reset(); }

    void SetUp() override
    {
        ASSERT_TRUE(desktop);
        ASSERT_TRUE(succeeded(monitors().add(first.primaryMonitor())));
        ASSERT_TRUE(succeeded(monitors().add(second.monitor())));
        auto launched = Tamrik::startAndAwaitKeys(*desktop, QStringLiteral(TAMRIK_PROGRAM));
        ASSERT_TRUE(succeeded(launched));
        tamrik = std::move(*launched);
        ASSERT_TRUE(succeeded(input().moveTo(first.pixels.center())));
        ASSERT_TRUE(succeeded(input().key(QStringLiteral("alt+shift+s"))));
        expectOverlay({first, second});
    }

    void TearDown() override
    {
        if (tamrik) {
            EXPECT_TRUE(tamrik->app().isRunning());
            EXPECT_EQ(tamrik->app().errorOutput(), QString());
            EXPECT_TRUE(tamrik->captures().isEmpty());
        }
        tamrik.reset();
        const auto names = monitors().names();
        ASSERT_TRUE(succeeded(names));
        for (const QString& name : *names) {
            // The X server has one of its own once there is no other.
            if (name != QLatin1String("screen")) {
                EXPECT_TRUE(succeeded(monitors().remove(name)));
            }
        }
    }

    static Input input() { return Input(*desktop); }
    static Monitors monitors() { return Monitors(*desktop); }

    void expectOverlay(const QList<ArrangedScreen>& screens)
    {
        const Arrangement arrangement(screens);
        ASSERT_TRUE(succeeded(CaptureChecks(*desktop, *tamrik, arrangement).awaitOverlayOnAll()));
    }

    /// In the overlay that is open.
    void expectDragIsSaved(const QList<ArrangedScreen>& screens, const ArrangedScreen& on)
    {
        const Arrangement arrangement(screens);
        const QPoint from = on.pixels.topLeft() + QPoint(33, 51);
        CaptureChecks(*desktop, *tamrik, arrangement)
            .expectDragIsSaved(on, from, on.pixels.bottomRight());
        ASSERT_TRUE(succeeded(tamrik->awaitNoOverlay()));
    }

    /// Puts another monitor in the second one's place, seen to go before it comes: Qt does not
    /// notice a monitor without an output that changes in between two looks at it.
    void replaceSecond(const Monitor& monitor)
    {
        ASSERT_TRUE(succeeded(monitors().remove(second.name)));
        expectOverlay({first});
        ASSERT_TRUE(succeeded(monitors().add(monitor)));
    }

    /// Leaves a drag under way, its button down.
    void beginDrag(const ArrangedScreen& on)
    {
        ASSERT_TRUE(succeeded(input().moveTo(on.pixels.topLeft() + QPoint(50, 60))));
        ASSERT_TRUE(succeeded(input().press()));
        ASSERT_TRUE(succeeded(input().moveTo(on.pixels.center())));
    }

    /// Ends the drag that was begun on the first screen at its last pixel.
    void endDragOnFirst()
    {
        ASSERT_TRUE(succeeded(input().moveTo(first.pixels.bottomRight())));
        ASSERT_TRUE(succeeded(input().release()));
        const Arrangement arrangement({first});
        const auto place = PatternedBackground::placeOf(
            CaptureChecks(*desktop, *tamrik, arrangement).takePicture());
        ASSERT_TRUE(succeeded(place));
        EXPECT_EQ(*place, QRect(QPoint(50, 60), first.pixels.bottomRight()));
    }

    static inline std::unique_ptr<VirtualDesktop> desktop;
    std::unique_ptr<Tamrik> tamrik;
};

} // namespace

TEST_F(ScreenChanges, AScreenThatComesIsCoveredAndCaptured)
{
    ASSERT_TRUE(succeeded(monitors().add(third.monitor())));
    expectOverlay({first, second, third});
    expectDragIsSaved({first, second, third}, third);
}

TEST_F(ScreenChanges, TheScreenWithADragUnderWayMayGo)
{
    beginDrag(second);
    ASSERT_TRUE(succeeded(monitors().remove(second.name)));
    expectOverlay({first});
    ASSERT_TRUE(succeeded(input().release()));
    expectDragIsSaved({first}, first);
}

TEST_F(ScreenChanges, ADragGoesOnWhenTheOtherScreenGoes)
{
    beginDrag(first);
    ASSERT_TRUE(succeeded(monitors().remove(second.name)));
    expectOverlay({first});
    endDragOnFirst();
}

TEST_F(ScreenChanges, AScreenOfAnotherSizeIsCoveredAfresh)
{
    beginDrag(second);
    ArrangedScreen larger = second;
    larger.pixels.setSize({573, 511});
    replaceSecond(larger.monitor());
    expectOverlay({first, larger});
    ASSERT_TRUE(succeeded(input().release()));
    // Its backdrop shows nothing of the window that went, or this would not look as it should.
    expectDragIsSaved({first, larger}, larger);
}

TEST_F(ScreenChanges, AScreenThatMovesIsCoveredWhereItIsNow)
{
    ArrangedScreen moved = second;
    moved.pixels.moveTopLeft({801, 200});
    replaceSecond(moved.monitor());
    expectOverlay({first, moved});
    expectDragIsSaved({first, moved}, moved);
}

TEST_F(ScreenChanges, ADragNamesTheSamePixelsUnderAnotherPrimary)
{
    beginDrag(first);
    replaceSecond({second.name, second.pixels, true});
    expectOverlay({first, second});
    endDragOnFirst();
}

TEST_F(ScreenChanges, TheKeyboardGoesToTheScreenThatStays)
{
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Escape"))));
    ASSERT_TRUE(succeeded(tamrik->awaitNoOverlay()));
    ASSERT_TRUE(succeeded(input().moveTo(second.pixels.center()))); // so its window has the keys
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("alt+shift+s"))));
    expectOverlay({first, second});
    ASSERT_TRUE(succeeded(monitors().remove(second.name)));
    expectOverlay({first});
    // The window goes an instant before the other one has the keyboard.
    EXPECT_TRUE(succeeded(waitFor(QStringLiteral("Escape to work"), [&]() -> Outcome<void> {
        if (const auto pressed = input().key(QStringLiteral("Escape")); !pressed)
            return pressed;
        return tamrik->overlay().isEmpty() ? Outcome<void>() : Failure{};
    })));
}

TEST_F(ScreenChanges, AnotherResolutionOfTheOnlyScreenIsCoveredAfresh)
{
    const auto xrandr = [](const char* arguments) {
        return run(QStringLiteral("xrandr"), QString::fromLatin1(arguments).split(u' '),
                   desktop->environment());
    };
    ASSERT_TRUE(succeeded(monitors().remove(second.name)));
    ASSERT_TRUE(succeeded(monitors().remove(first.name)));
    expectOverlay({{QStringLiteral("screen"), {0, 0, 1400, 800}}});

    ASSERT_TRUE(succeeded(xrandr("--newmode small 60 1000 1010 1020 1100 600 603 606 620")));
    ASSERT_TRUE(succeeded(xrandr("--addmode screen small")));
    const ArrangedScreen small{QStringLiteral("screen"), {0, 0, 1000, 600}};
    ASSERT_TRUE(succeeded(xrandr("--output screen --mode small")));
    expectOverlay({small});
    expectDragIsSaved({small}, small);
    ASSERT_TRUE(succeeded(xrandr("--output screen --mode 1400x800")));
}
