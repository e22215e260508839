// Proves that each kind of virtual desktop is what it claims to be.

#include "desktop/TestProbe.h"
#include "desktop/harness/DesktopTest.h"
#include "desktop/harness/Helpers.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "desktop/harness/Server.h"
#include "desktop/harness/TrayIcon.h"
#include "desktop/harness/VirtualDesktop.h"
#include "desktop/harness/Windows.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>

#include <csignal>

namespace Desktop {
namespace {

QString screensSeenByQt(const VirtualDesktop& desktop)
{
    auto probe = startProbe(desktop, {QStringLiteral("screens")});
    if (!probe)
        return probe.error();
    const auto ended = (*probe)->waitForExit();
    return ended ? (*probe)->output() : ended.error();
}

struct ScreensCase {
    const char* name;
    int screens;
    double scale;
    double secondScale;
    SecondAt secondAt;
    const char* seen;
};

class Screens : public testing::TestWithParam<ScreensCase> {};

TEST_P(Screens, AreSeenByQtAtTheScaleAskedFor)
{
    Options options;
    options.screens = GetParam().screens;
    options.scale = GetParam().scale;
    options.secondScale = GetParam().secondScale;
    options.secondAt = GetParam().secondAt;
    const auto desktop = VirtualDesktop::start(options);
    ASSERT_TRUE(succeeded(desktop));
    EXPECT_EQ(screensSeenByQt(**desktop).toStdString(), GetParam().seen);
}

// Qt lists the primary screen first, and leaves each screen's origin at its pixel.
INSTANTIATE_TEST_SUITE_P(
    All, Screens,
    testing::Values(ScreensCase{"OneAt1", 1, 1, 0, SecondAt::Right, "screen 0,0 1920x1080 @1\n"},
                    ScreensCase{"OneAt1_5", 1, 1.5, 0, SecondAt::Right,
                                "screen 0,0 1280x720 @1.5\n"},
                    ScreensCase{"OneAt2", 1, 2, 0, SecondAt::Right, "screen 0,0 960x540 @2\n"},
                    ScreensCase{"TwoAt1", 2, 1, 0, SecondAt::Right,
                                "first 0,0 1920x1080 @1\nsecond 1920,0 1280x1024 @1\n"},
                    ScreensCase{"TwoAt1_5", 2, 1.5, 0, SecondAt::Right,
                                "first 0,0 1280x720 @1.5\nsecond 1920,0 853x683 @1.5\n"},
                    ScreensCase{"TwoAt2", 2, 2, 0, SecondAt::Right,
                                "first 0,0 960x540 @2\nsecond 1920,0 640x512 @2\n"},
                    ScreensCase{"SecondAtTheLeft", 2, 1, 0, SecondAt::Left,
                                "first 1280,0 1920x1080 @1\nsecond 0,0 1280x1024 @1\n"},
                    ScreensCase{"SecondAboveAtAnotherScale", 2, 2, 1, SecondAt::Above,
                                "first 0,1024 960x540 @2\nsecond 0,0 1280x1024 @1\n"}),
    [](const auto& instance) { return std::string(instance.param.name); });

struct CompositorCase {
    const char* name;
    WindowManager windowManager;
    Compositor compositor;
    bool isComposited;
};

class Compositing : public testing::TestWithParam<CompositorCase> {};

TEST_P(Compositing, DecidesWhetherTheBackgroundShowsThroughAWindow)
{
    Options options;
    options.windowManager = GetParam().windowManager;
    options.compositor = GetParam().compositor;
    const auto desktop = VirtualDesktop::start(options);
    ASSERT_TRUE(succeeded(desktop));
    EXPECT_EQ((*desktop)->server().selectionIsOwned("_NET_WM_CM_S0"), GetParam().isComposited);

    const Screen screen(**desktop);
    const QPoint middle(960, 540);
    ASSERT_TRUE(succeeded(screen.awaitColor(middle, backgroundColor)));
    const auto probe = startProbe(**desktop, {QStringLiteral("veil")});
    ASSERT_TRUE(succeeded(probe));
    ASSERT_TRUE(succeeded(Windows(**desktop).awaitTitle(QStringLiteral("veil"))));
    EXPECT_TRUE(succeeded(
        screen.awaitColor(middle, GetParam().isComposited ? veiledColor : QColor(Qt::black), 2)));
}

INSTANTIATE_TEST_SUITE_P(
    All, Compositing,
    testing::Values(
        CompositorCase{"OpenboxAndPicom", WindowManager::Openbox, Compositor::Picom, true},
        CompositorCase{"OpenboxAlone", WindowManager::Openbox, Compositor::None, false},
        CompositorCase{"Xfwm4", WindowManager::Xfwm4, Compositor::OfTheWindowManager, true},
        CompositorCase{"Xfwm4AndPicom", WindowManager::Xfwm4, Compositor::Picom, true},
        CompositorCase{"Xfwm4Alone", WindowManager::Xfwm4, Compositor::None, false},
        CompositorCase{"PicomAlone", WindowManager::None, Compositor::Picom, true},
        CompositorCase{"Neither", WindowManager::None, Compositor::None, false}),
    [](const auto& instance) { return std::string(instance.param.name); });

struct TrayCase {
    const char* name;
    Tray tray;
    int screens;
    double scale;
};

class Trays : public testing::TestWithParam<TrayCase> {
protected:
    void SetUp() override
    {
        Options options;
        options.tray = GetParam().tray;
        options.screens = GetParam().screens;
        options.scale = GetParam().scale;
        auto desktop = VirtualDesktop::start(options);
        ASSERT_TRUE(succeeded(desktop));
        m_desktop = std::move(*desktop);
    }

    std::unique_ptr<VirtualDesktop> m_desktop;
};

TEST_P(Trays, ShowAnIconThatIsFoundAndClicked)
{
    const auto probe = startProbe(*m_desktop, {QStringLiteral("tray"), QStringLiteral("#ff0000")});
    ASSERT_TRUE(succeeded(probe));
    const auto icon = awaitTrayIcon(*m_desktop, (*probe)->pid());
    ASSERT_TRUE(succeeded(icon));
    EXPECT_TRUE(succeeded(Screen(*m_desktop).awaitColor(icon->center(), QColor(0xff, 0, 0), 8)));

    const Input input(*m_desktop);
    ASSERT_TRUE(succeeded(input.click(icon->center())));
    EXPECT_TRUE(succeeded((*probe)->awaitOutput(QStringLiteral("clicked"))));
    EXPECT_EQ((*probe)->output(), QStringLiteral("clicked\n"));
    ASSERT_TRUE(succeeded(input.click(icon->center(), Button::Right)));
    EXPECT_TRUE(succeeded((*probe)->awaitOutput(QStringLiteral("menu"))));
}

INSTANTIATE_TEST_SUITE_P(All, Trays,
                         testing::Values(TrayCase{"XEmbed", Tray::XEmbed, 1, 1},
                                         TrayCase{"XEmbedAt2OnTwoScreens", Tray::XEmbed, 2, 2},
                                         TrayCase{"XEmbedAt1_5", Tray::XEmbed, 1, 1.5},
                                         TrayCase{"StatusNotifier", Tray::StatusNotifier, 1, 1},
                                         TrayCase{"StatusNotifierAt2OnTwoScreens",
                                                  Tray::StatusNotifier, 2, 2}),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST(Desktops, ThatCannotStartSayWhy)
{
    Options options;
    options.screens = 3;
    const auto desktop = VirtualDesktop::start(options);
    ASSERT_FALSE(desktop);
    EXPECT_TRUE(desktop.error().contains(QStringLiteral("--screens is one of 1 2, not '3'")))
        << qUtf8Printable(desktop.error());
}

TEST(Desktops, LeaveNothingBehind)
{
    const auto desktop = VirtualDesktop::start();
    ASSERT_TRUE(succeeded(desktop));
    const QString home = (*desktop)->home();
    const auto terminal =
        openTerminal(**desktop, QStringLiteral("Last"), QStringLiteral("/dev/null"));
    ASSERT_TRUE(succeeded(terminal));
    ASSERT_TRUE(succeeded((*desktop)->stop()));
    EXPECT_FALSE(QFileInfo::exists(home));
    // Its X server is gone, so the terminal goes too.
    EXPECT_TRUE(succeeded(terminal->app->waitForExit()));
}

TEST(Desktops, EndWithTheirOwnerHoweverItEnds)
{
    const QString name = QStringLiteral("orphan-%1").arg(QCoreApplication::applicationPid());
    const QString commands = QStringLiteral(
        R"sh(eval "$("$1" start --name "$2" --until-exit-of $$)"; echo "$HOME"; kill -KILL $$)sh");
    const auto owner =
        App::start(QProcessEnvironment::systemEnvironment(), QStringLiteral("bash"),
                   {QStringLiteral("-c"), commands, QStringLiteral("bash"), desktopScript(), name});
    ASSERT_TRUE(succeeded(owner));
    const auto ended = (*owner)->waitForExit(std::chrono::seconds(40));
    ASSERT_TRUE(succeeded(ended));
    EXPECT_EQ(*ended, (Exit{SIGKILL, true}));
    const QString home = (*owner)->output().trimmed();
    ASSERT_TRUE(home.endsWith(name + QStringLiteral("/home"))) << qUtf8Printable(home);
    EXPECT_TRUE(succeeded(
        waitUntil(QStringLiteral("the desktop to end"), [&] { return !QFileInfo::exists(home); })));
}

} // namespace
} // namespace Desktop
