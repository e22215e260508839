// Other programs that hold the keyboard or the pointer, as those with an open menu do.

#include "desktop/flow/FlowTest.h"
#include "desktop/harness/Grab.h"
#include "desktop/harness/TrayIcon.h"

#include <chrono>
#include <thread>

using namespace Desktop;

namespace {

constexpr int sKey = 39; // X key codes
constexpr int escapeKey = 9;
constexpr int leftButton = 1;

class GrabFlow : public FlowTest {
protected:
    Outcome<void> press(const char* combination) const
    {
        return input().key(QString::fromLatin1(combination));
    }
};

} // namespace

TEST_F(GrabFlow, WhileAnotherProgramHoldsTheKeyboardTheHotKeyIsItsAndLaterOursAgain)
{
    begin({});
    const auto grab = Grab::take(*desktop, Grab::Device::Keyboard);
    ASSERT_TRUE(succeeded(grab));
    ASSERT_TRUE(succeeded(press("alt+shift+s")));
    ASSERT_TRUE(succeeded((*grab)->awaitPress(sKey)));
    (*grab)->release();
    EXPECT_TRUE(tamrik->overlay().isEmpty());

    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(press("Escape")));
    EXPECT_TRUE(succeeded(tamrik->awaitNoOverlay()));

    // The same with a real menu.
    const auto manager = openFileManager(*desktop, desktop->home());
    ASSERT_TRUE(succeeded(manager));
    const auto menus = [this] { return windows().overrideRedirects().size(); };
    const auto without = menus();
    ASSERT_TRUE(succeeded(input().click(manager->window.geometry.center(), Button::Right)));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("a menu"), [&] { return menus() > without; })));
    ASSERT_TRUE(succeeded(press("alt+shift+s")));
    ASSERT_TRUE(succeeded(press("Escape")));
    ASSERT_TRUE(succeeded(
        waitUntil(QStringLiteral("the end of the menu"), [&] { return menus() == without; })));
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    EXPECT_EQ(tamrik->overlay().size(), 1);
}

TEST_F(GrabFlow, AnOverlayThatCannotHaveTheKeyboardIsUsedByMouseAndGetsItAsSoonAsItIsFree)
{
    // Without a window manager nothing would give the focus back to who has lost it.
    begin({.windowManager = WindowManager::None, .compositor = Compositor::Picom});
    const std::uint32_t focusBefore = windows().focused();
    const auto grab = Grab::take(*desktop, Grab::Device::Keyboard);
    ASSERT_TRUE(succeeded(grab));
    const auto icon = awaitTrayIcon(*desktop, tamrik->app().pid());
    ASSERT_TRUE(succeeded(icon));
    const auto captureByMenu = [&]() -> Outcome<void> {
        if (const auto clicked = input().click(icon->center()); !clicked)
            return clicked;
        const auto menu = tamrik->awaitMenu();
        if (!menu)
            return menu.failure();
        // "Capture Area" is the first item.
        if (const auto clicked =
                input().click({menu->geometry.center().x(), menu->geometry.top() + 14});
            !clicked)
            return clicked;
        return tamrik->awaitOverlay();
    };

    ASSERT_TRUE(succeeded(captureByMenu()));
    ASSERT_TRUE(succeeded(dragOut(area())));
    ASSERT_TRUE(succeeded(tamrik->awaitCapture(1)));

    ASSERT_TRUE(succeeded(captureByMenu()));
    const auto opened = std::chrono::steady_clock::now();
    ASSERT_TRUE(succeeded(press("Escape")));
    ASSERT_TRUE(succeeded((*grab)->awaitPress(escapeKey)));
    EXPECT_EQ(tamrik->overlay().size(), 1);
    // However long it takes, the overlay waits, and takes no focus instead.
    std::this_thread::sleep_until(opened + std::chrono::milliseconds(2300));
    EXPECT_EQ(windows().focused(), focusBefore);
    (*grab)->release();
    ASSERT_TRUE(succeeded(waitFor(QStringLiteral("Escape to work"), [&]() -> Outcome<void> {
        if (const auto pressed = press("Escape"); !pressed)
            return pressed;
        return tamrik->overlay().isEmpty() ? Outcome<void>() : Failure{};
    })));
    EXPECT_EQ(windows().focused(), focusBefore);
}

TEST_F(GrabFlow, WhileAnotherProgramHoldsThePointerTheKeysWorkAndThenTheMouse)
{
    begin({});
    const auto grab = Grab::take(*desktop, Grab::Device::Pointer);
    ASSERT_TRUE(succeeded(grab));
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(dragOut(area())));
    ASSERT_TRUE(succeeded((*grab)->awaitPress(leftButton)));
    EXPECT_EQ(tamrik->overlay().size(), 1);
    ASSERT_TRUE(succeeded(press("Escape")));
    ASSERT_TRUE(succeeded(tamrik->awaitNoOverlay()));
    EXPECT_TRUE(tamrik->captures().isEmpty());

    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    (*grab)->release();
    ASSERT_TRUE(succeeded(dragOut(area())));
    EXPECT_TRUE(succeeded(tamrik->awaitCapture(1)));
}
