// The main job, by real keys and a real mouse, on every sort of desktop.

#include "desktop/flow/Tamrik.h"
#include "desktop/harness/Clipboard.h"
#include "desktop/harness/Commands.h"
#include "desktop/harness/DesktopTest.h"
#include "desktop/harness/Helpers.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "desktop/harness/TrayIcon.h"

#include <QFile>
#include <QUrl>

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

class ScreenshotFlow : public testing::TestWithParam<Case> {
protected:
    void SetUp() override
    {
        auto started = VirtualDesktop::start(GetParam().options);
        ASSERT_TRUE(succeeded(started));
        desktop = std::move(*started);
        // The user's own window, with the focus.
        auto opened = openTerminal(*desktop, QStringLiteral("Notes"), typed());
        ASSERT_TRUE(succeeded(opened));
        terminal = std::move(*opened);
        ASSERT_TRUE(succeeded(input().click(terminal->window.geometry.center())));
        if (GetParam().options.windowManager != WindowManager::None) {
            ASSERT_TRUE(succeeded(Windows(*desktop).awaitActive(terminal->window.id)));
        }
        auto launched = Tamrik::startAndAwaitKeys(*desktop, QStringLiteral(TAMRIK_PROGRAM));
        ASSERT_TRUE(succeeded(launched));
        tamrik = std::move(*launched);
    }

    void TearDown() override
    {
        if (tamrik) {
            EXPECT_TRUE(tamrik->app().isRunning());
            EXPECT_EQ(tamrik->app().errorOutput(), QString());
        }
    }

    double scale() const { return GetParam().options.scale; }
    Input input() const { return Input(*desktop); }
    Screen screen() const { return Screen(*desktop); }
    QString typed() const { return desktop->home() + QStringLiteral("/typed"); }

    /// A rectangle whose edges fall on whole points at every scale tried here.
    static QRect area() { return {300, 240, 360, 180}; }

    /// Drags a rectangle out with the left button.
    Outcome<void> dragOut(QRect pixels) const
    {
        return input().drag(pixels.topLeft(),
                            pixels.topLeft() + QPoint(pixels.width(), pixels.height()));
    }

    static QByteArray contents(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<VirtualDesktop> desktop;
    std::optional<Helper> terminal;
    std::unique_ptr<Tamrik> tamrik;
};

class TwoScreenFlow : public ScreenshotFlow {};
class TrayFlow : public ScreenshotFlow {};

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

TEST_P(ScreenshotFlow, TheOverlayTakesKeysAndLeavesTheUsersFocusAlone)
{
    const auto focusBefore = Windows(*desktop).focused();
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    EXPECT_EQ(Windows(*desktop).focused(), focusBefore);
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Escape"))));
    ASSERT_TRUE(succeeded(tamrik->awaitNoOverlay()));
    EXPECT_EQ(Windows(*desktop).focused(), focusBefore);
    EXPECT_TRUE(tamrik->captures().isEmpty());

    // The user goes on typing where they were.
    ASSERT_TRUE(succeeded(input().type(QStringLiteral("still here"))));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the typed line"),
                                    [this] { return contents(typed()) == "still here\n"; })));
}

TEST_P(ScreenshotFlow, TheScreenIsDimmedNeverBlackAndComesBack)
{
    const QPoint corner(20, 400);
    const auto plain = screen().pixel(corner);
    ASSERT_TRUE(succeeded(plain));
    ASSERT_TRUE(succeeded(input().moveTo({900, 600})));
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    const QColor dimmed(qRound(plain->red() * 0.75), qRound(plain->green() * 0.75),
                        qRound(plain->blue() * 0.75));
    EXPECT_TRUE(succeeded(screen().awaitColor(corner, dimmed, 3)));

    // Inside a selection the screen looks as it did.
    ASSERT_TRUE(succeeded(input().moveTo({10, 390})));
    ASSERT_TRUE(succeeded(input().press()));
    ASSERT_TRUE(succeeded(input().moveTo({160, 460})));
    EXPECT_TRUE(succeeded(screen().awaitColor(corner, *plain, 1)));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Escape"))));
    ASSERT_TRUE(succeeded(tamrik->awaitNoOverlay()));
    ASSERT_TRUE(succeeded(input().release()));
    EXPECT_TRUE(succeeded(screen().awaitColor(corner, *plain)));
    EXPECT_TRUE(tamrik->captures().isEmpty());
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

const Case plain{"OpenboxPicomXEmbed", {}};
const Case uncomposited{"OpenboxUncomposited", {.compositor = Compositor::None}};
const Case xfwm4{"Xfwm4CompositedStatusNotifier",
                 {.windowManager = WindowManager::Xfwm4, .tray = Tray::StatusNotifier}};
const Case bare{
    "NothingButAServer",
    {.windowManager = WindowManager::None, .compositor = Compositor::None, .tray = Tray::None}};
const Case twoScreens{"TwoScreens", {.screens = 2, .tray = Tray::StatusNotifier}};
const Case scaleTwo{"ScaleTwo", {.scale = 2}};
const Case twoScaled{"TwoScreensScaleOneAndAHalfUncomposited",
                     {.screens = 2, .scale = 1.5, .compositor = Compositor::None}};

std::string nameOf(const testing::TestParamInfo<Case>& instance)
{
    return instance.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Desktops, ScreenshotFlow,
                         testing::Values(plain, uncomposited, xfwm4, bare, twoScreens, scaleTwo,
                                         twoScaled),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Desktops, TwoScreenFlow, testing::Values(twoScreens, twoScaled), nameOf);
INSTANTIATE_TEST_SUITE_P(Desktops, TrayFlow,
                         testing::Values(plain, uncomposited, xfwm4, twoScreens, scaleTwo), nameOf);
