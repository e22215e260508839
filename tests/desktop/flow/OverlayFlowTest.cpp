// The overlay among other programs: what it covers, what it takes from them, and what is left of it
// afterwards, with and without a window manager and a compositor.

#include "desktop/flow/FlowTest.h"
#include "desktop/harness/TrayIcon.h"

#include <chrono>
#include <thread>

using namespace Desktop;

namespace {

/// What the overlay must not change for others.
struct Surroundings {
    /// The window that gets the keys, and the one that the window manager says is active.
    std::uint32_t focused;
    std::uint32_t active;
    /// The windows that task bars and switchers show.
    QList<std::uint32_t> clients;

    friend bool operator==(const Surroundings&, const Surroundings&) = default;
};

void PrintTo(const Surroundings& s, std::ostream* out)
{
    *out << "focus " << s.focused << ", active " << s.active << ", " << s.clients.size()
         << " clients";
}

QImage dimmed(QImage image)
{
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            // Black at a quarter lets three quarters through.
            row[x] = qRgb(qRound(qRed(row[x]) * 0.75), qRound(qGreen(row[x]) * 0.75),
                          qRound(qBlue(row[x]) * 0.75));
        }
    }
    return image;
}

class OverlayFlow : public FlowTestOnDesktops {
protected:
    Surroundings surroundings() const
    {
        return {windows().focused(), windows().active(), windows().clientList()};
    }

    /// Each screen's upper and lower edge, where panels are, and its left side. The middle of the
    /// upper part has the instruction.
    QList<QRect> watched() const
    {
        const Options& options = desktop->options();
        QList<QRect> screens{QRect(QPoint(), options.size)};
        if (options.screens == 2)
            screens += QRect(QPoint(options.size.width(), 0), options.secondSize);
        QList<QRect> result;
        for (const QRect& s : screens) {
            const int edge = qRound(36 * scale());
            result << QRect(s.left(), s.top(), s.width(), edge)
                   << QRect(s.left(), s.bottom() + 1 - edge, s.width(), edge)
                   << QRect(s.left(), s.top(), s.width() / 4, s.height());
        }
        return result;
    }

    /// The whole desktop once everything on it is drawn, the status item too.
    Outcome<QImage> awaitStillScreen() const
    {
        if (desktop->options().tray != Tray::None) {
            if (const auto icon = awaitTrayIcon(*desktop, tamrik->app().pid()); !icon)
                return icon.failure();
        }
        constexpr std::chrono::milliseconds still(150);
        QImage before;
        return waitFor(QStringLiteral("the screen to be still"), [&]() -> Outcome<QImage> {
            std::this_thread::sleep_for(still);
            const auto now = screen().grab();
            if (!now)
                return now;
            const bool same = before == *now;
            before = *now;
            return same ? now : Outcome<QImage>(Failure{});
        });
    }

    Outcome<QList<QImage>> look() const
    {
        QList<QImage> pictures;
        for (const QRect& part : watched()) {
            auto picture = screen().grab(part);
            if (!picture)
                return picture.failure();
            pictures += *picture;
        }
        return pictures;
    }

    /// Waits until all that is watched looks like that, but for rounding.
    Outcome<void> awaitLook(const QList<QImage>& expected) const
    {
        constexpr int tolerance = 3;
        return waitFor(QStringLiteral("the screen to look as it should"), [&]() -> Outcome<void> {
            for (qsizetype i = 0; i < expected.size(); ++i) {
                const auto now = screen().grab(watched().at(i));
                if (!now)
                    return now.failure();
                if (const int wrong = differingPixels(*now, expected.at(i), tolerance))
                    return Failure{QStringLiteral("%1 pixels of part %2 differ").arg(wrong).arg(i)};
            }
            return {};
        });
    }
};

} // namespace

TEST_P(OverlayFlow, CoversEverythingTakesTheKeysAndLeavesNothingBehind)
{
    const QPoint aside(qRound(900 * scale() / 2), 600);
    ASSERT_TRUE(succeeded(input().moveTo(aside)));
    const Surroundings before = surroundings();
    const auto whole = awaitStillScreen();
    ASSERT_TRUE(succeeded(whole));
    const auto plain = look();
    ASSERT_TRUE(succeeded(plain));
    QList<QImage> dark;
    for (const QImage& part : *plain)
        dark += dimmed(part);

    // It is seen over everything, panels too: the screen dimmed, and not black.
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    EXPECT_TRUE(succeeded(awaitLook(dark)));
    EXPECT_TRUE(succeeded(waitFor(QStringLiteral("the crosshair"), [this]() -> Outcome<void> {
        const auto shape = screen().pointerShape();
        if (!shape)
            return shape.failure();
        return *shape == "cross" ? Outcome<void>() : Failure{QString::fromUtf8(*shape)};
    })));
    EXPECT_EQ(surroundings(), before);

    // Inside a selection the screen looks as it did.
    const QRect inside(20, 400, 120, 60);
    ASSERT_TRUE(succeeded(input().moveTo(inside.topLeft() - QPoint(10, 10))));
    ASSERT_TRUE(succeeded(input().press()));
    ASSERT_TRUE(succeeded(input().moveTo(inside.bottomRight() + QPoint(20, 20))));
    ASSERT_TRUE(succeeded(input().type(QStringLiteral("to nobody"))));
    EXPECT_TRUE(succeeded(
        screen().awaitColor(inside.center(), plain->at(2).pixelColor(inside.center()), 1)));

    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Escape"))));
    ASSERT_TRUE(succeeded(tamrik->awaitNoOverlay()));
    ASSERT_TRUE(succeeded(input().release()));
    ASSERT_TRUE(succeeded(input().moveTo(aside)));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the screen as it was"), [&] {
        const auto now = screen().grab();
        return now && *now == *whole;
    })));
    EXPECT_NE(*screen().pointerShape(), "cross");
    EXPECT_EQ(surroundings(), before);
    EXPECT_TRUE(tamrik->captures().isEmpty());

    // A drag takes the screen as it is without the overlay.
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(dragOut(area())));
    const auto path = tamrik->awaitCapture(1);
    ASSERT_TRUE(succeeded(path));
    EXPECT_EQ(differingPixels(QImage(*path), whole->copy(area())), 0);
    EXPECT_TRUE(tamrik->overlay().isEmpty());
    EXPECT_EQ(surroundings(), before);

    // The user goes on typing where they were; nothing that they typed meanwhile went there.
    ASSERT_TRUE(succeeded(input().type(QStringLiteral("still here\n"))));
    EXPECT_TRUE(succeeded(awaitTyped("still here\n")));
}

namespace {

constexpr auto openbox = WindowManager::Openbox;
constexpr auto xfwm4 = WindowManager::Xfwm4;
constexpr auto noManager = WindowManager::None;
constexpr auto noCompositor = Compositor::None;

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Overlay, OverlayFlow,
    testing::Values(
        DesktopCase{"OpenboxPicom", {.windowManager = openbox}},
        DesktopCase{"OpenboxUncomposited", {.windowManager = openbox, .compositor = noCompositor}},
        DesktopCase{"Xfwm4Composited", {.windowManager = xfwm4, .tray = Tray::StatusNotifier}},
        DesktopCase{"Xfwm4Uncomposited", {.windowManager = xfwm4, .compositor = noCompositor}},
        DesktopCase{"PicomAlone", {.windowManager = noManager, .compositor = Compositor::Picom}},
        DesktopCase{"NothingButAServer",
                    {.windowManager = noManager, .compositor = noCompositor, .tray = Tray::None}},
        DesktopCase{"TwoScreensScaleOneAndAHalfUncomposited",
                    {.screens = 2, .scale = 1.5, .compositor = noCompositor}},
        DesktopCase{"ScaleTwo", {.scale = 2}}),
    nameOf);
