// Starting the program while it runs.

#include "desktop/flow/Tamrik.h"
#include "desktop/harness/Commands.h"
#include "desktop/harness/DesktopTest.h"
#include "desktop/harness/Helpers.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Server.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>
#include <vector>

using namespace Desktop;
using namespace std::chrono_literals;

namespace {

struct Case {
    const char* name;
    Options options;
};

void PrintTo(const Case& c, std::ostream* out)
{
    *out << c.name;
}

QString program()
{
    return QStringLiteral(TAMRIK_PROGRAM);
}

constexpr QPoint pointer(720, 400);

class SecondStartOn : public testing::TestWithParam<Case> {};

class SecondStart : public testing::Test {
protected:
    void SetUp() override
    {
        auto started = VirtualDesktop::start();
        ASSERT_TRUE(succeeded(started));
        desktop = std::move(*started);
        ASSERT_TRUE(succeeded(input().moveTo(pointer)));
    }

    void launch()
    {
        auto launched = Tamrik::startAndAwaitKeys(*desktop, program());
        ASSERT_TRUE(succeeded(launched));
        tamrik = std::move(*launched);
    }

    Input input() const { return Input(*desktop); }

    std::unique_ptr<VirtualDesktop> desktop;
    std::unique_ptr<Tamrik> tamrik;
};

} // namespace

TEST_P(SecondStartOn, TheMenuIsAtThePointerAndTakesKeysAndMouse)
{
    const auto desktop = VirtualDesktop::start(GetParam().options);
    ASSERT_TRUE(succeeded(desktop));
    const Input input(**desktop);
    const QString typed = (*desktop)->home() + QStringLiteral("/typed");
    const auto terminal = openTerminal(**desktop, QStringLiteral("Notes"), typed);
    ASSERT_TRUE(succeeded(terminal));
    ASSERT_TRUE(succeeded(input.click(terminal->window.geometry.center())));
    const auto launched = Tamrik::startAndAwaitKeys(**desktop, program());
    ASSERT_TRUE(succeeded(launched));
    Tamrik& tamrik = **launched;
    const auto focusBefore = Windows(**desktop).focused();

    // By keys, without a click first.
    ASSERT_TRUE(succeeded(input.moveTo(pointer)));
    ASSERT_TRUE(succeeded(tamrik.startAgain(program())));
    auto menu = tamrik.awaitMenu();
    ASSERT_TRUE(succeeded(menu));
    EXPECT_EQ(menu->geometry.topLeft(), pointer);
    ASSERT_TRUE(succeeded(input.key(QStringLiteral("Down"))));
    ASSERT_TRUE(succeeded(input.key(QStringLiteral("Return")))); // "Capture Area"
    ASSERT_TRUE(succeeded(tamrik.awaitOverlay()));
    ASSERT_TRUE(succeeded(input.key(QStringLiteral("Escape"))));
    ASSERT_TRUE(succeeded(tamrik.awaitNoOverlay()));

    // By the mouse, at another place.
    ASSERT_TRUE(succeeded(input.moveTo({300, 500})));
    ASSERT_TRUE(succeeded(tamrik.startAgain(program())));
    menu = tamrik.awaitMenu();
    ASSERT_TRUE(succeeded(menu));
    EXPECT_EQ(menu->geometry.topLeft(), QPoint(300, 500));
    ASSERT_TRUE(succeeded(input.click(menu->geometry.topLeft() + QPoint(60, 12))));
    ASSERT_TRUE(succeeded(tamrik.awaitOverlay()));
    ASSERT_TRUE(succeeded(input.key(QStringLiteral("Escape"))));
    ASSERT_TRUE(succeeded(tamrik.awaitNoOverlay()));

    // Esc closes it, and so does a click elsewhere; the user goes on where they were.
    ASSERT_TRUE(succeeded(tamrik.startAgain(program())));
    ASSERT_TRUE(succeeded(tamrik.awaitMenu()));
    ASSERT_TRUE(succeeded(input.key(QStringLiteral("Escape"))));
    ASSERT_TRUE(succeeded(tamrik.awaitNoMenu()));
    ASSERT_TRUE(succeeded(tamrik.startAgain(program())));
    ASSERT_TRUE(succeeded(tamrik.awaitMenu()));
    ASSERT_TRUE(succeeded(input.click({1500, 120})));
    ASSERT_TRUE(succeeded(tamrik.awaitNoMenu()));
    EXPECT_EQ(Windows(**desktop).focused(), focusBefore);
    EXPECT_TRUE(tamrik.captures().isEmpty());
    EXPECT_FALSE(QDir((*desktop)->home() + QStringLiteral("/.config/tamrik")).exists());
    EXPECT_EQ(tamrik.app().errorOutput(), QString());
}

TEST_F(SecondStart, AfterAKillTheNextStartIsTheOne)
{
    launch();
    ASSERT_TRUE(succeeded(tamrik->app().signal(SIGKILL)));
    ASSERT_TRUE(succeeded(tamrik->app().waitForExit()));
    launch();
    EXPECT_EQ(tamrik->app().errorOutput(), QString());
    ASSERT_TRUE(succeeded(tamrik->startAgain(program())));
    EXPECT_TRUE(succeeded(tamrik->awaitMenu()));
}

TEST_F(SecondStart, OfSeveralAtOnceOneRemainsAndOpensItsMenu)
{
    std::vector<std::unique_ptr<Tamrik>> starts;
    for (int i = 0; i < 5; ++i) {
        auto started = Tamrik::start(*desktop, program());
        ASSERT_TRUE(succeeded(started));
        starts.push_back(std::move(*started));
    }
    const auto running = [&starts] {
        return std::count_if(starts.begin(), starts.end(),
                             [](const auto& start) { return start->app().isRunning(); });
    };
    ASSERT_TRUE(succeeded(
        waitUntil(QStringLiteral("one to remain"), [&running] { return running() == 1; })));
    for (const auto& start : starts) {
        if (start->app().isRunning()) {
            const auto menu = start->awaitMenu();
            ASSERT_TRUE(succeeded(menu));
            EXPECT_EQ(menu->geometry.topLeft(), pointer);
        } else {
            const auto ended = start->app().waitForExit();
            ASSERT_TRUE(succeeded(ended));
            EXPECT_EQ(*ended, (Exit{0, false}));
        }
        EXPECT_EQ(start->app().errorOutput(), QString());
    }
    EXPECT_EQ(running(), 1);
}

TEST_F(SecondStart, AnInstanceThatHangsEndsItWithOneSilently)
{
    launch();
    ASSERT_TRUE(succeeded(tamrik->app().signal(SIGSTOP)));
    const auto again = App::start(*desktop, program());
    ASSERT_TRUE(succeeded(again));
    const auto ended = (*again)->waitForExit();
    ASSERT_TRUE(succeeded(tamrik->app().signal(SIGCONT)));
    ASSERT_TRUE(succeeded(ended));
    EXPECT_EQ(*ended, (Exit{1, false}));
    EXPECT_EQ((*again)->errorOutput(), QString());
    // It has come to, and answers.
    ASSERT_TRUE(succeeded(tamrik->startAgain(program())));
    EXPECT_TRUE(succeeded(tamrik->awaitMenu()));
}

TEST_F(SecondStart, AnotherDisplayOfTheSameUserHasAnInstanceOfItsOwn)
{
    launch();
    const auto other = VirtualDesktop::start({.compositor = Compositor::None, .tray = Tray::None});
    ASSERT_TRUE(succeeded(other));
    const QString runtime = QStringLiteral("XDG_RUNTIME_DIR");
    const QMap<QString, QString> sameUser = {{runtime, desktop->environment().value(runtime)}};
    const auto second = Tamrik::startAndAwaitKeys(**other, program(), sameUser);
    ASSERT_TRUE(succeeded(second));
    ASSERT_TRUE(succeeded((*second)->startAgain(program(), sameUser)));
    ASSERT_TRUE(succeeded((*second)->awaitMenu()));
    EXPECT_FALSE(tamrik->menuIsOpen());
    ASSERT_TRUE(succeeded(tamrik->startAgain(program())));
    EXPECT_TRUE(succeeded(tamrik->awaitMenu()));
}

TEST_F(SecondStart, AnOpenSelectionStaysAsItIs)
{
    launch();
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    ASSERT_TRUE(succeeded(tamrik->startAgain(program())));
    EXPECT_FALSE(tamrik->menuIsOpen());
    EXPECT_EQ(tamrik->overlay().size(), 1);
    ASSERT_TRUE(succeeded(input().drag({300, 240}, {660, 420})));
    EXPECT_TRUE(succeeded(tamrik->awaitCapture(1)));
}

TEST_F(SecondStart, AnOpenMenuStaysWhereItIs)
{
    launch();
    ASSERT_TRUE(succeeded(tamrik->startAgain(program())));
    ASSERT_TRUE(succeeded(tamrik->awaitMenu()));
    ASSERT_TRUE(succeeded(input().moveTo({200, 200})));
    ASSERT_TRUE(succeeded(tamrik->startAgain(program())));
    const auto menu = tamrik->awaitMenu();
    ASSERT_TRUE(succeeded(menu));
    EXPECT_EQ(menu->geometry.topLeft(), pointer);
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Escape"))));
    EXPECT_TRUE(succeeded(tamrik->awaitNoMenu()));
}

TEST_F(SecondStart, ByAKeyOfTheWindowManager)
{
    launch();
    QFile file(desktop->home() + QStringLiteral("/.config/openbox/rc.xml"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray text = file.readAll();
    file.close();
    const QString binding = QStringLiteral("<keybind key=\"A-F12\"><action name=\"Execute\">"
                                           "<command>&quot;%1&quot;</command></action></keybind>"
                                           "</keyboard>")
                                .arg(program());
    text.replace("</keyboard>", binding.toUtf8());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(text), text.size());
    file.close();
    ASSERT_TRUE(succeeded(
        run(QStringLiteral("openbox"), {QStringLiteral("--reconfigure")}, desktop->environment())));

    ASSERT_TRUE(succeeded(input().keyDown(QStringLiteral("alt"))));
    // Until the window manager has read its settings the key does nothing.
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the menu"), [this] {
        return input().key(QStringLiteral("F12")) && tamrik->menuIsOpen();
    })));
    ASSERT_TRUE(succeeded(input().keyUp(QStringLiteral("alt"))));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Down"))));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    EXPECT_TRUE(succeeded(tamrik->awaitOverlay()));
}

TEST_F(SecondStart, WhileTheKeyIsDownThatDidItTheMenuWaitsForTheKeyboard)
{
    launch();
    // A program with a hot key, which has the keyboard until the key is up.
    const Server& server = desktop->server();
    constexpr xcb_keycode_t f12 = 96;
    const auto cookie = xcb_grab_key_checked(server.connection(), 1, server.root(), 0, f12,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    ASSERT_FALSE(Reply<xcb_generic_error_t>(xcb_request_check(server.connection(), cookie)));
    ASSERT_TRUE(succeeded(input().keyDown(QStringLiteral("F12"))));
    ASSERT_TRUE(succeeded(tamrik->startAgain(program())));
    ASSERT_TRUE(succeeded(tamrik->startAgain(program()))); // the key repeats
    EXPECT_FALSE(tamrik->menuIsOpen());
    ASSERT_TRUE(succeeded(input().keyUp(QStringLiteral("F12"))));
    ASSERT_TRUE(succeeded(tamrik->awaitMenu()));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Down"))));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    EXPECT_TRUE(succeeded(tamrik->awaitOverlay()));
}

TEST_F(SecondStart, AMenuThatWaitsGivesWayToASelection)
{
    const auto terminal =
        openTerminal(*desktop, QStringLiteral("Notes"), desktop->home() + QStringLiteral("/typed"));
    ASSERT_TRUE(succeeded(terminal));
    launch();
    // The terminal has the pointer while the button is down, so the menu waits for it.
    ASSERT_TRUE(succeeded(input().moveTo(terminal->window.geometry.center())));
    ASSERT_TRUE(succeeded(input().press()));
    ASSERT_TRUE(succeeded(tamrik->startAgain(program())));
    ASSERT_TRUE(succeeded(tamrik->pressCaptureKey()));
    EXPECT_FALSE(tamrik->menuIsOpen());
    ASSERT_TRUE(succeeded(input().release()));
    // Longer than the menu waits between two looks. It must neither open nor take the keyboard.
    std::this_thread::sleep_for(200ms);
    EXPECT_FALSE(tamrik->menuIsOpen());
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Escape"))));
    ASSERT_TRUE(succeeded(tamrik->awaitNoOverlay()));
    EXPECT_FALSE(tamrik->menuIsOpen());
}

INSTANTIATE_TEST_SUITE_P(
    SecondStart, SecondStartOn,
    testing::Values(
        Case{"Openbox", {}},
        Case{"Xfwm4StatusNotifier",
             {.windowManager = WindowManager::Xfwm4, .tray = Tray::StatusNotifier}},
        Case{"OpenboxWithoutATray", {.compositor = Compositor::None, .tray = Tray::None}},
        Case{"NothingButAServer",
             {.windowManager = WindowManager::None,
              .compositor = Compositor::None,
              .tray = Tray::None}},
        Case{"ScaleTwo", {.scale = 2, .compositor = Compositor::None, .tray = Tray::None}}),
    [](const testing::TestParamInfo<Case>& instance) { return instance.param.name; });
