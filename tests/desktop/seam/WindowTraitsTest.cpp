#include "Platform/WindowTraits.h"

#include "desktop/seam/OtherClient.h"
#include "desktop/seam/Xdotool.h"
#include "support/EventLoop.h"

#include <QKeyEvent>
#include <QProcess>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class KeyPanel : public QWidget {
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override { keys.append(event->key()); }
};

/// Panels over a terminal that has the focus.
class WindowTraitsTest : public testing::Test {
protected:
    void SetUp() override
    {
        terminal.start(QStringLiteral("xterm"),
                       {QStringLiteral("-fn"), QStringLiteral("fixed"), QStringLiteral("-T"),
                        QStringLiteral("user's window"), QStringLiteral("-geometry"),
                        QStringLiteral("60x20+300+200")});
        ASSERT_TRUE(terminal.waitForStarted());
        ASSERT_TRUE(runUntil([this] {
            userFocus = other.findViewable("XTerm");
            return userFocus != XCB_WINDOW_NONE && other.setFocus(userFocus) &&
                   other.focus() == userFocus;
        }));
        panel.setGeometry(100, 100, 300, 200);
    }

    void TearDown() override
    {
        Platform::orderOut(panel);
        terminal.terminate();
        ASSERT_TRUE(terminal.waitForFinished());
        ASSERT_TRUE(runUntil([this] { return !other.findViewable("XTerm"); }));
    }

    bool isAbove(const QWidget& upper, const QWidget& lower)
    {
        const auto windows = other.stacking();
        const auto at = [&windows](const QWidget& w) {
            return std::find(windows.begin(), windows.end(), static_cast<xcb_window_t>(w.winId()));
        };
        return at(upper) != windows.end() && at(lower) < at(upper);
    }

    OtherClient other;
    QProcess terminal;
    xcb_window_t userFocus = 0;
    KeyPanel panel;
};

} // namespace

TEST_F(WindowTraitsTest, APanelBypassesTheWindowManagerAndStandsWhereItIsPut)
{
    Platform::applyTraits(panel, {});
    Platform::orderFrontRegardless(panel);
    ASSERT_TRUE(runUntil([this] { return panel.windowHandle()->isExposed(); }));
    EXPECT_TRUE(other.bypassesWindowManager(static_cast<xcb_window_t>(panel.winId())));
    EXPECT_EQ(panel.frameGeometry(), QRect(100, 100, 300, 200));
    EXPECT_EQ(other.focus(), userFocus);
}

TEST_F(WindowTraitsTest, AKeyPanelGetsTheKeysAndTheUsersWindowKeepsItsFocus)
{
    Platform::applyTraits(panel, {.level = Platform::WindowLevel::ScreenSaver});
    Platform::orderFrontRegardless(panel);
    Platform::makeKey(panel);
    ASSERT_TRUE(runUntil([this] { return panel.windowHandle()->isExposed(); }));
    xdotool(QStringLiteral("key Escape key Return key KP_Enter"));
    ASSERT_TRUE(runUntil([this] { return panel.keys.size() == 3; }));
    EXPECT_EQ(panel.keys, (QList<int>{Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter}));
    EXPECT_EQ(other.focus(), userFocus);

    Platform::orderOut(panel);
    EXPECT_FALSE(panel.isVisible());
    EXPECT_EQ(other.focus(), userFocus);
    // The server reads its clients in an order of its own, so this may need another try.
    EXPECT_TRUE(runUntil([this] { return other.grabKeyboard(); }))
        << "the keyboard was not given back";
}

TEST_F(WindowTraitsTest, TheKeyboardOutlivesThePanelThatHadItBefore)
{
    KeyPanel former;
    former.setGeometry(100, 100, 300, 200);
    for (KeyPanel* each : {&former, &panel}) {
        Platform::applyTraits(*each, {.level = Platform::WindowLevel::ScreenSaver});
        Platform::orderFrontRegardless(*each);
        Platform::makeKey(*each);
        ASSERT_TRUE(runUntil([each] { return each->windowHandle()->isExposed(); }));
    }
    Platform::orderOut(former);
    xdotool(QStringLiteral("key Escape"));
    EXPECT_TRUE(runUntil([this] { return panel.keys.contains(Qt::Key_Escape); }));
    EXPECT_EQ(other.focus(), userFocus);
}

TEST_F(WindowTraitsTest, ANonActivatingPanelTakesNoFocusWhenClicked)
{
    Platform::applyTraits(panel, {.nonActivating = true});
    Platform::orderFrontRegardless(panel);
    ASSERT_TRUE(runUntil([this] { return panel.windowHandle()->isExposed(); }));
    xdotool(QStringLiteral("mousemove 150 150 click 1"));
    settle();
    EXPECT_EQ(other.focus(), userFocus);
}

TEST_F(WindowTraitsTest, WhileAnotherProgramHoldsTheKeyboardItIsTriedAgain)
{
    ASSERT_TRUE(other.grabKeyboard());
    Platform::applyTraits(panel, {.level = Platform::WindowLevel::ScreenSaver});
    Platform::orderFrontRegardless(panel);
    Platform::makeKey(panel);
    settle();
    other.ungrabKeyboard();
    ASSERT_TRUE(runUntil([] {
        OtherClient third;
        const bool free = third.grabKeyboard();
        return !free; // the panel has it
    }));
    xdotool(QStringLiteral("key Escape"));
    EXPECT_TRUE(runUntil([this] { return panel.keys.contains(Qt::Key_Escape); }));
}

TEST_F(WindowTraitsTest, APanelStaysBelowAnOpenOverlay)
{
    Platform::applyTraits(panel, {.level = Platform::WindowLevel::ScreenSaver});
    Platform::orderFrontRegardless(panel);
    QWidget chip;
    chip.setGeometry(150, 150, 50, 50);
    Platform::applyTraits(chip,
                          {.level = Platform::WindowLevel::StatusPanel, .nonActivating = true});
    Platform::orderFrontRegardless(chip);
    EXPECT_TRUE(runUntil([&] { return isAbove(panel, chip); }));
    Platform::orderOut(panel);
    QWidget second;
    second.setGeometry(150, 150, 50, 50);
    Platform::applyTraits(second, {.level = Platform::WindowLevel::StatusPanel});
    Platform::orderFrontRegardless(second);
    EXPECT_TRUE(runUntil([&] { return isAbove(second, chip); }));
}

TEST_F(WindowTraitsTest, AnOverlayThatWasDeletedIsForgotten)
{
    {
        QWidget overlay;
        Platform::applyTraits(overlay, {.level = Platform::WindowLevel::ScreenSaver});
        Platform::orderFrontRegardless(overlay);
    }
    Platform::applyTraits(panel, {});
    Platform::orderFrontRegardless(panel);
    EXPECT_TRUE(panel.isVisible());
}
