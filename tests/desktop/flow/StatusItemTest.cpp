// The status item in the trays of real panels.

#include "desktop/flow/FlowTest.h"
#include "desktop/harness/App.h"
#include "desktop/harness/TrayIcon.h"

#include <signal.h>

using namespace Desktop;

namespace {

/// Pixels that are the stop sign's red, those at its edge too.
int redPixels(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            count += c.red() > 180 && c.green() < 110 && c.blue() < 110;
        }
    }
    return count;
}

class StatusItem : public testing::TestWithParam<DesktopCase> {
protected:
    void SetUp() override
    {
        auto started = VirtualDesktop::start(GetParam().options);
        ASSERT_TRUE(succeeded(started));
        desktop = std::move(*started);
        auto probe = App::start(*desktop, QStringLiteral(TAMRIK_STATUS_PROBE));
        ASSERT_TRUE(succeeded(probe));
        item = std::move(*probe);
    }

    void TearDown() override
    {
        if (item) {
            EXPECT_TRUE(item->isRunning());
            EXPECT_EQ(item->errorOutput(), QString());
        }
    }

    /// Waits until the item is or is not red, whatever happens to the panel meanwhile.
    Outcome<void> awaitRed(bool wanted)
    {
        const auto attempt = [&]() -> Outcome<void> {
            const auto icon = findTrayIcon(*desktop, item->pid());
            if (!icon)
                return icon.failure();
            const auto image = Screen(*desktop).grab(*icon);
            if (!image)
                return image.failure();
            // More than half of a disc that fills the icon's square but for its rim.
            const int iconSide = qRound(22 * desktop->options().scale);
            const int red = redPixels(*image);
            if (wanted ? red > iconSide * iconSide / 3 : red == 0)
                return {};
            return Failure{QStringLiteral("%1 red pixels in %2x%3")
                               .arg(red)
                               .arg(image->width())
                               .arg(image->height())};
        };
        return waitFor(wanted ? QStringLiteral("a red icon") : QStringLiteral("an icon not red"),
                       attempt);
    }

    /// Chooses the second item of the menu, which starts and stops the recording.
    Outcome<void> toggle(const char* textAfterwards)
    {
        const auto icon = awaitTrayIcon(*desktop, item->pid());
        if (!icon)
            return icon.failure();
        const Input input(*desktop);
        if (const auto clicked = input.click(icon->center()); !clicked)
            return clicked;
        const auto menu =
            Windows(*desktop).await(QStringLiteral("the menu"), [&](const Window& window) {
                return window.pid == item->pid() && window.isOverrideRedirect &&
                       window.isTopLevel && window.geometry.height() > 100;
            });
        if (!menu)
            return menu.failure();
        for (const char* key : {"Down", "Down", "Return"}) {
            if (const auto pressed = input.key(QString::fromLatin1(key)); !pressed)
                return pressed;
        }
        expected += QString::fromLatin1(textAfterwards) + QLatin1Char('\n');
        return item->awaitOutput(expected);
    }

    /// Ends the panel and starts it anew, as people do, and as it does itself after a crash.
    Outcome<void> restartPanel()
    {
        const bool tint2 = GetParam().options.tray == Tray::XEmbed;
        const auto window = Windows(*desktop).awaitClass(tint2 ? QStringLiteral("Tint2")
                                                               : QStringLiteral("Xfce4-panel"));
        if (!window)
            return window.failure();
        // The window is of the desktop's own X server, so the process is of the desktop too.
        ::kill(static_cast<pid_t>(window->pid), SIGTERM);
        const auto gone =
            Windows(*desktop).awaitNone(QStringLiteral("the panel"), [&](const Window& other) {
                return other.pid == window->pid;
            });
        if (!gone)
            return gone;
        auto started =
            tint2 ? App::start(*desktop, QStringLiteral("tint2"),
                               {QStringLiteral("-c"),
                                desktop->home() + QStringLiteral("/.config/tint2/tint2rc")})
                  : App::start(*desktop, QStringLiteral("xfce4-panel"),
                               {QStringLiteral("--disable-wm-check")});
        if (!started)
            return started.failure();
        panel = std::move(*started);
        return {};
    }

    std::unique_ptr<VirtualDesktop> desktop;
    std::unique_ptr<App> panel;
    std::unique_ptr<App> item;
    QString expected;
};

} // namespace

TEST_P(StatusItem, IsRedWhileRecordingAlsoAfterThePanelWasStartedAnew)
{
    ASSERT_TRUE(succeeded(awaitTrayIcon(*desktop, item->pid())));
    EXPECT_TRUE(succeeded(awaitRed(false)));
    ASSERT_TRUE(succeeded(toggle("Stop Recording")));
    EXPECT_TRUE(succeeded(awaitRed(true)));

    ASSERT_TRUE(succeeded(restartPanel()));
    ASSERT_TRUE(succeeded(awaitRed(true)));

    ASSERT_TRUE(succeeded(toggle("Start Recording")));
    EXPECT_TRUE(succeeded(awaitRed(false)));
}

INSTANTIATE_TEST_SUITE_P(
    Trays, StatusItem,
    testing::Values(DesktopCase{"XEmbed", {}}, DesktopCase{"XEmbedAtTwo", {.scale = 2}},
                    DesktopCase{"StatusNotifier", {.tray = Tray::StatusNotifier}},
                    DesktopCase{"StatusNotifierAtTwo", {.scale = 2, .tray = Tray::StatusNotifier}}),
    nameOf);
