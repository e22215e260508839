// Proves that the harness sees and does what it says, before any other test relies on it.

#include "desktop/TestProbe.h"
#include "desktop/harness/App.h"
#include "desktop/harness/Clipboard.h"
#include "desktop/harness/Commands.h"
#include "desktop/harness/DesktopTest.h"
#include "desktop/harness/Helpers.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "desktop/harness/TrayIcon.h"
#include "desktop/harness/VirtualDesktop.h"
#include "desktop/harness/Windows.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <csignal>

namespace Desktop {
namespace {

TEST(TrayIcon, OfEachProcessIsItsOwn)
{
    const auto desktop = VirtualDesktop::start();
    ASSERT_TRUE(succeeded(desktop));
    const Screen screen(**desktop);
    const auto red = startProbe(**desktop, {QStringLiteral("tray"), QStringLiteral("#ff0000")});
    ASSERT_TRUE(succeeded(red));
    const auto green = startProbe(**desktop, {QStringLiteral("tray"), QStringLiteral("#00ff00")});
    ASSERT_TRUE(succeeded(green));
    const auto greenIcon = awaitTrayIcon(**desktop, (*green)->pid());
    ASSERT_TRUE(succeeded(greenIcon));
    const auto redIcon = awaitTrayIcon(**desktop, (*red)->pid());
    ASSERT_TRUE(succeeded(redIcon));
    EXPECT_TRUE(succeeded(screen.awaitColor(redIcon->center(), QColor(0xff, 0, 0), 8)));
    EXPECT_TRUE(succeeded(screen.awaitColor(greenIcon->center(), QColor(0, 0xff, 0), 8)));
}

TEST(TrayIcon, OfAProcessThatHasNoneIsNotFound)
{
    const auto desktop = VirtualDesktop::start();
    ASSERT_TRUE(succeeded(desktop));
    const auto icon = awaitTrayIcon(**desktop, 1, std::chrono::milliseconds(200));
    ASSERT_FALSE(icon);
    EXPECT_EQ(icon.error(),
              QStringLiteral("waited 0.2 s in vain for the tray icon of process 1; at "
                             "last: process 1 has no window in the tray"));
}

// The rest needs no particular desktop.
class Harness : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        auto desktop = VirtualDesktop::start();
        ASSERT_TRUE(succeeded(desktop));
        s_desktop = std::move(*desktop);
    }
    static void TearDownTestSuite()
    {
        ASSERT_TRUE(s_desktop);
        const auto stopped = s_desktop->stop();
        EXPECT_TRUE(succeeded(stopped));
        s_desktop.reset();
    }
    void SetUp() override { ASSERT_TRUE(s_desktop); }

    static VirtualDesktop& desktop() { return *s_desktop; }

private:
    static std::unique_ptr<VirtualDesktop> s_desktop;
};

std::unique_ptr<VirtualDesktop> Harness::s_desktop;

TEST_F(Harness, KeepsTheDesktopsHomeApart)
{
    EXPECT_NE(desktop().home(), QDir::homePath());
    EXPECT_TRUE(QFileInfo::exists(desktop().home()));
    const QString run = desktop().environment().value(QStringLiteral("XDG_RUNTIME_DIR"));
    EXPECT_EQ(QFileInfo(run).permissions() & (QFile::ReadGroup | QFile::ReadOther),
              QFile::Permissions());
    EXPECT_EQ(desktop().environment().value(QStringLiteral("LC_ALL")), QStringLiteral("C.UTF-8"));
}

TEST_F(Harness, TypesIntoAForeignWindow)
{
    const QString file = desktop().home() + QStringLiteral("/typed");
    const auto terminal = openTerminal(desktop(), QStringLiteral("Terminal 1"), file);
    ASSERT_TRUE(succeeded(terminal));
    ASSERT_TRUE(succeeded(Windows(desktop()).awaitActive(terminal->window.id)));
    const Input input(desktop());
    ASSERT_TRUE(succeeded(input.type(QStringLiteral("Hello, Desk"))));
    ASSERT_TRUE(succeeded(input.keyDown(QStringLiteral("shift"))));
    ASSERT_TRUE(succeeded(input.key(QStringLiteral("a"))));
    ASSERT_TRUE(succeeded(input.keyUp(QStringLiteral("shift"))));
    ASSERT_TRUE(succeeded(input.key(QStringLiteral("Return"))));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the text to be typed"), [&] {
        QFile typed(file);
        return typed.open(QIODevice::ReadOnly) && typed.readAll() == "Hello, DeskA\n";
    })));
}

TEST_F(Harness, TellsWindowsApart)
{
    const Windows windows(desktop());
    const QString nowhere = QStringLiteral("/dev/null");
    const auto one = openTerminal(desktop(), QStringLiteral("One"), nowhere);
    ASSERT_TRUE(succeeded(one));
    const auto two = openTerminal(desktop(), QStringLiteral("Two"), nowhere);
    ASSERT_TRUE(succeeded(two));
    EXPECT_NE(one->window.id, two->window.id);
    EXPECT_EQ(two->window.className, QStringLiteral("XTerm"));
    EXPECT_EQ(two->window.pid, two->app->pid());
    EXPECT_FALSE(two->window.isOverrideRedirect);
    EXPECT_TRUE(windows.clientList().contains(one->window.id));
    EXPECT_TRUE(windows.clientList().contains(two->window.id));

    ASSERT_TRUE(succeeded(windows.awaitActive(two->window.id)));
    ASSERT_TRUE(succeeded(windows.activate(one->window.id)));
    ASSERT_TRUE(succeeded(windows.awaitActive(one->window.id)));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the focus to follow"),
                                    [&] { return windows.focused() == one->window.id; })));

    const auto isTwo = [&](const Window& window) { return window.id == two->window.id; };
    ASSERT_TRUE(succeeded(windows.close(two->window.id)));
    EXPECT_TRUE(succeeded(windows.awaitNone(QStringLiteral("the second terminal"), isTwo)));
    EXPECT_TRUE(succeeded(two->app->waitForExit()));
}

TEST_F(Harness, ListsWindowsThatBypassTheWindowManager)
{
    const Windows windows(desktop());
    EXPECT_TRUE(windows.overrideRedirects().isEmpty());
    const auto probe = startProbe(desktop(), {QStringLiteral("veil")});
    ASSERT_TRUE(succeeded(probe));
    ASSERT_TRUE(succeeded(windows.awaitProcess((*probe)->pid())));
    const QList<Window> bypassing = windows.overrideRedirects();
    ASSERT_EQ(bypassing.size(), 1);
    EXPECT_EQ(bypassing.first().title, QStringLiteral("veil"));
    EXPECT_EQ(bypassing.first().geometry.size(), QSize(200, 200));
    EXPECT_FALSE(windows.clientList().contains(bypassing.first().id));
}

TEST_F(Harness, DragsAWindowByItsTitle)
{
    const auto terminal =
        openTerminal(desktop(), QStringLiteral("Dragged"), QStringLiteral("/dev/null"));
    ASSERT_TRUE(succeeded(terminal));
    const QRect before = terminal->window.geometry;
    const QPoint title(before.center().x(), before.top() - 8);
    const Input input(desktop());
    ASSERT_TRUE(succeeded(input.drag(title, title + QPoint(120, 90))));
    EXPECT_EQ(*input.position(), title + QPoint(120, 90));
    EXPECT_TRUE(succeeded(waitFor(QStringLiteral("the window to move"), [&]() -> Outcome<void> {
        const auto now = Windows(desktop()).awaitTitle(QStringLiteral("Dragged"));
        if (!now)
            return now.failure();
        const QPoint way = now->geometry.topLeft() - before.topLeft();
        return way == QPoint(120, 90)
                   ? Outcome<void>()
                   : Failure{QStringLiteral("it moved %1,%2").arg(way.x()).arg(way.y())};
    })));
}

TEST_F(Harness, ShowsAFolderInAFileManager)
{
    const QString folder = desktop().home() + QStringLiteral("/A Folder To Show");
    ASSERT_TRUE(QDir().mkpath(folder));
    const auto manager = openFileManager(desktop(), folder);
    ASSERT_TRUE(succeeded(manager));
    EXPECT_EQ(manager->window.className, QStringLiteral("Pcmanfm"));
}

TEST_F(Harness, CarriesBytesThroughTheClipboard)
{
    const Clipboard clipboard(desktop());
    EXPECT_FALSE(clipboard.read(QStringLiteral("image/png")));
    QByteArray bytes;
    for (int i = 0; i < 100000; ++i)
        bytes.append(static_cast<char>(i * 7 % 256));
    ASSERT_TRUE(succeeded(clipboard.write(QStringLiteral("image/png"), bytes)));
    const auto targets = clipboard.targets();
    ASSERT_TRUE(succeeded(targets));
    EXPECT_TRUE(targets->contains(QStringLiteral("image/png")));
    const auto read = clipboard.read(QStringLiteral("image/png"));
    ASSERT_TRUE(succeeded(read));
    EXPECT_EQ(*read, bytes);
}

TEST_F(Harness, ComparesPicturesOfTheScreen)
{
    const Screen screen(desktop());
    ASSERT_TRUE(succeeded(screen.awaitColor({960, 540}, backgroundColor)));
    const auto before = screen.grab();
    ASSERT_TRUE(succeeded(before));
    EXPECT_EQ(before->size(), QSize(1920, 1080));
    const auto probe = startProbe(desktop(), {QStringLiteral("veil")});
    ASSERT_TRUE(succeeded(probe));
    ASSERT_TRUE(succeeded(screen.awaitColor({960, 540}, veiledColor, 2)));
    const auto after = screen.grab();
    ASSERT_TRUE(succeeded(after));
    EXPECT_EQ(differingPixels(*before, *after), 200 * 200);
    EXPECT_EQ(differingPixels(*before, *after, 255), 0);
    EXPECT_FALSE(screen.grab(QRect(1900, 1000, 100, 100)));

    const QString path = desktop().home() + QStringLiteral("/after.png");
    ASSERT_TRUE(succeeded(savePng(*after, path)));
    EXPECT_EQ(differingPixels(QImage(path), *after), 0);
}

TEST_F(Harness, TellsHowAProgramEnded)
{
    const auto quits =
        App::start(desktop(), QStringLiteral("sh"),
                   {QStringLiteral("-c"), QStringLiteral("echo $GREETING >&2; exit 3")},
                   {{QStringLiteral("GREETING"), QStringLiteral("good day")}});
    ASSERT_TRUE(succeeded(quits));
    const auto three = (*quits)->waitForExit();
    ASSERT_TRUE(succeeded(three));
    EXPECT_EQ(*three, (Exit{3, false}));
    EXPECT_EQ((*quits)->errorOutput(), QStringLiteral("good day\n"));
    EXPECT_FALSE((*quits)->signal(SIGTERM));

    const auto killed = App::start(desktop(), QStringLiteral("sleep"), {QStringLiteral("60")});
    ASSERT_TRUE(succeeded(killed));
    EXPECT_TRUE((*killed)->isRunning());
    EXPECT_FALSE((*killed)->waitForExit(std::chrono::milliseconds(50)));
    const auto end = (*killed)->stop();
    ASSERT_TRUE(succeeded(end));
    EXPECT_EQ(*end, (Exit{SIGTERM, true}));
    EXPECT_FALSE(App::start(desktop(), QStringLiteral("no-such-program")));
}

TEST(Script, TakesTheCallersOwnSettingsAway)
{
    const QString script = QStringLiteral(TAMRIK_DESKTOP_SCRIPT);
    const QString commands = QStringLiteral(
        "set -e; name=settings-$$; start=$(\"$0\" start --name $name --wm none --compositor none "
        "--tray none --until-exit-of $$); env=$(\"$0\" env --name $name); \"$0\" stop --name "
        "$name; "
        "(eval \"$start\"; echo ${QT_SCALE_FACTOR-gone}); (eval \"$env\"; echo "
        "${QT_SCALE_FACTOR-gone})");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QStringLiteral("3"));
    const auto printed =
        run(QStringLiteral("bash"), {QStringLiteral("-c"), commands, script}, environment);
    ASSERT_TRUE(succeeded(printed));
    EXPECT_EQ(*printed, "gone\ngone\n");
}

} // namespace
} // namespace Desktop
