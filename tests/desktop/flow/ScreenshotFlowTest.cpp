// The main job, by real keys and a real mouse, on every sort of desktop.

#include "desktop/flow/FlowTest.h"
#include "desktop/harness/Clipboard.h"
#include "desktop/harness/Commands.h"
#include "desktop/harness/TrayIcon.h"

#include <QFile>
#include <QUrl>

using namespace Desktop;

namespace {

class ScreenshotFlow : public FlowTestOnDesktops {};
class TwoScreenFlow : public FlowTestOnDesktops {};
class TrayFlow : public FlowTestOnDesktops {};

} // namespace

TEST_P(ScreenshotFlow, KeyDragAndThePictureIsThere)
{
    const auto before = screen().grab(area());
    ASSERT_TRUE(succeeded(before));
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(dragOut(area())));
    const auto path = tamrik->awaitCapture(1);
    ASSERT_TRUE(succeeded(path));
    ASSERT_TRUE(succeeded(tamrik->awaitNoOverlay()));

    // What was selected is what is saved, in the screen's own pixels.
    QImage picture;
    ASSERT_TRUE(picture.load(*path));
    EXPECT_EQ(picture.size(), area().size());
    EXPECT_EQ(differingPixels(picture, *before), 0);
    EXPECT_NEAR(picture.dotsPerMeterX(), 72 * scale() / 0.0254, 1);

    // It is on the clipboard at once, as the file's own bytes and as a file.
    const Clipboard clipboard(*desktop);
    const auto bytes = waitFor(QStringLiteral("the picture on the clipboard"),
                               [&] { return clipboard.read(QStringLiteral("image/png")); });
    ASSERT_TRUE(succeeded(bytes));
    EXPECT_EQ(*bytes, contents(*path));
    const auto urls = clipboard.read(QStringLiteral("text/uri-list"));
    ASSERT_TRUE(succeeded(urls));
    EXPECT_EQ(*urls, QUrl::fromLocalFile(*path).toEncoded() + "\r\n");
    EXPECT_EQ(tamrik->preferences().value(QStringLiteral("lastCapturePath")), *path);
}

TEST_P(ScreenshotFlow, ADragToTheLastPixelTakesTheWholeScreen)
{
    const QSize size = GetParam().options.size;
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(input().drag({0, 0}, {size.width() - 1, size.height() - 1})));
    const auto path = tamrik->awaitCapture(1);
    ASSERT_TRUE(succeeded(path));
    EXPECT_EQ(QImage(*path).size(), size);
}

TEST_P(ScreenshotFlow, KeysWorkWithThePointerInTheLastCorner)
{
    const QSize size = GetParam().options.size;
    ASSERT_TRUE(succeeded(input().moveTo({size.width() - 1, size.height() - 1})));
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Escape"))));
    EXPECT_TRUE(succeeded(tamrik->awaitNoOverlay()));
}

TEST_P(TwoScreenFlow, TheSecondScreenIsCapturedAsWell)
{
    const QRect onSecond(GetParam().options.size.width() + 90, 120, 240, 300);
    const auto before = screen().grab(onSecond);
    ASSERT_TRUE(succeeded(before));
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(dragOut(onSecond)));
    const auto path = tamrik->awaitCapture(1);
    ASSERT_TRUE(succeeded(path));
    EXPECT_EQ(differingPixels(QImage(*path), *before), 0);
}

TEST_P(TwoScreenFlow, AScreenThatGoesLeavesTheOverlayOfTheOther)
{
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(run(QStringLiteral("xrandr"),
                              {QStringLiteral("--delmonitor"), QStringLiteral("second")},
                              desktop->environment())));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the overlay of one screen"),
                                    [this] { return tamrik->overlay().size() == 1; })));
    ASSERT_TRUE(succeeded(dragOut(area())));
    ASSERT_TRUE(succeeded(tamrik->awaitCapture(1)));
    EXPECT_EQ(tamrik->captures().size(), 1);
}

TEST_P(TrayFlow, BothButtonsOpenTheMenuWhichCaptures)
{
    const auto icon = awaitTrayIcon(*desktop, tamrik->app().pid());
    ASSERT_TRUE(succeeded(icon));
    const bool ownMenuOnTheRight = GetParam().options.tray == Tray::XEmbed;
    for (const Button button : {Button::Left, Button::Right}) {
        const auto windowsBefore = Windows(*desktop).overrideRedirects().size();
        ASSERT_TRUE(succeeded(input().click(icon->center(), button)));
        // A panel that hosts StatusNotifierItems shows a menu of its own on the right button.
        ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the menu"), [&] {
            return button == Button::Left || ownMenuOnTheRight
                       ? tamrik->menuIsOpen()
                       : Windows(*desktop).overrideRedirects().size() > windowsBefore;
        })));
        // The first item is "Capture Area".
        ASSERT_TRUE(succeeded(input().key(QStringLiteral("Down"))));
        ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
        ASSERT_TRUE(succeeded(tamrik->awaitOverlay()));
        // The menu had the keyboard; the overlay has it now.
        ASSERT_TRUE(succeeded(waitFor(QStringLiteral("Escape to work"), [&]() -> Outcome<void> {
            if (const auto pressed = input().key(QStringLiteral("Escape")); !pressed)
                return pressed;
            return tamrik->overlay().isEmpty() ? Outcome<void>() : Failure{};
        })));
    }
    EXPECT_TRUE(tamrik->captures().isEmpty());
}

namespace {

const DesktopCase plain{"OpenboxPicomXEmbed", {}};
const DesktopCase uncomposited{"OpenboxUncomposited", {.compositor = Compositor::None}};
const DesktopCase xfwm4{"Xfwm4CompositedStatusNotifier",
                        {.windowManager = WindowManager::Xfwm4, .tray = Tray::StatusNotifier}};
const DesktopCase bare{
    "NothingButAServer",
    {.windowManager = WindowManager::None, .compositor = Compositor::None, .tray = Tray::None}};
const DesktopCase twoScreens{"TwoScreens", {.screens = 2, .tray = Tray::StatusNotifier}};
const DesktopCase scaleTwo{"ScaleTwo", {.scale = 2}};
const DesktopCase twoScaled{"TwoScreensScaleOneAndAHalfUncomposited",
                            {.screens = 2, .scale = 1.5, .compositor = Compositor::None}};

} // namespace

INSTANTIATE_TEST_SUITE_P(Desktops, ScreenshotFlow,
                         testing::Values(plain, uncomposited, xfwm4, bare, twoScreens, scaleTwo,
                                         twoScaled),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Desktops, TwoScreenFlow, testing::Values(twoScreens, twoScaled), nameOf);
INSTANTIATE_TEST_SUITE_P(Desktops, TrayFlow,
                         testing::Values(plain, uncomposited, xfwm4, twoScreens, scaleTwo), nameOf);
