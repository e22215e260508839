// Taking a picture of a program that fills the screen.

#include "desktop/flow/FlowTest.h"
#include "desktop/harness/FullScreenWindow.h"

#include <QFile>

using namespace Desktop;

namespace {

class FullScreenFlow : public FlowTestOnDesktops {};

} // namespace

TEST_P(FullScreenFlow, AProgramThatFillsTheScreenIsCoveredAndIsWhatIsSaved)
{
    // From the upper edge to the lower one: the panels' places, which the program has taken.
    const QRect wanted(40, 0, 320, desktop->options().size.height());
    const QPoint outside(400, 700);
    for (const auto kind : {FullScreenWindow::Kind::Managed, FullScreenWindow::Kind::Bypass}) {
        SCOPED_TRACE(kind == FullScreenWindow::Kind::Managed ? "managed" : "bypassing");
        const auto window = FullScreenWindow::show(*desktop, kind);
        ASSERT_TRUE(succeeded(window));
        // A game that asks nobody is given no focus either.
        const std::uint32_t focused =
            kind == FullScreenWindow::Kind::Managed ? (*window)->id() : terminal->window.id;
        ASSERT_TRUE(succeeded(windows().awaitFocused(focused)));
        const QColor plain =
            FullScreenWindow::picture(QRect(outside, QSize(1, 1))).pixelColor(0, 0);
        const QColor dark(qRound(plain.red() * 0.75), qRound(plain.green() * 0.75),
                          qRound(plain.blue() * 0.75));

        ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
        EXPECT_TRUE(succeeded(screen().awaitColor(outside, dark, 3)));
        ASSERT_TRUE(succeeded(dragOut(wanted)));
        const auto path = tamrik->awaitCapture(1);
        ASSERT_TRUE(succeeded(path));
        EXPECT_EQ(differingPixels(QImage(*path), FullScreenWindow::picture(wanted)), 0);
        EXPECT_EQ(windows().focused(), focused);
        EXPECT_TRUE(succeeded(screen().awaitColor(outside, plain)));
        EXPECT_TRUE(succeeded(tamrik->putChipsAway()));
        // The next one may come within the same second, and would have its name.
        ASSERT_TRUE(QFile::remove(*path));
    }
}

INSTANTIATE_TEST_SUITE_P(FullScreen, FullScreenFlow,
                         testing::Values(DesktopCase{"Openbox", {}},
                                         DesktopCase{"OpenboxUncomposited",
                                                     {.compositor = Compositor::None}},
                                         DesktopCase{"Xfwm4",
                                                     {.windowManager = WindowManager::Xfwm4,
                                                      .tray = Tray::StatusNotifier}}),
                         nameOf);
