// Starting the program: well, badly, from another place.

#include "desktop/flow/Tamrik.h"
#include "desktop/harness/Clipboard.h"
#include "desktop/harness/Commands.h"
#include "desktop/harness/DesktopTest.h"
#include "desktop/harness/Helpers.h"
#include "desktop/harness/Input.h"
#include "desktop/harness/Screen.h"
#include "desktop/harness/TrayIcon.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

using namespace Desktop;

namespace {

class Launch : public testing::Test {
protected:
    void SetUp() override
    {
        auto started = VirtualDesktop::start();
        ASSERT_TRUE(succeeded(started));
        desktop = std::move(*started);
    }

    static QString program() { return QStringLiteral(TAMRIK_PROGRAM); }

    void storePreferences(const QByteArray& json)
    {
        const QString folder = desktop->home() + QStringLiteral("/.config/tamrik");
        ASSERT_TRUE(QDir().mkpath(folder));
        QFile file(folder + QStringLiteral("/preferences.json"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(json), json.size());
    }

    Input input() const { return Input(*desktop); }

    Outcome<void> openMenu(Tamrik& tamrik)
    {
        const auto icon = awaitTrayIcon(*desktop, tamrik.app().pid());
        if (!icon)
            return icon.failure();
        if (const auto clicked = input().click(icon->center()); !clicked)
            return clicked;
        return waitUntil(QStringLiteral("the menu"), [&] { return tamrik.menuIsOpen(); });
    }

    /// Takes a picture with a program that may lie anywhere.
    void expectCaptures(Tamrik& tamrik)
    {
        const int before = static_cast<int>(tamrik.captures().size());
        ASSERT_TRUE(succeeded(tamrik.pressCaptureKey()));
        ASSERT_TRUE(succeeded(input().drag({100, 100}, {300, 200})));
        const auto path = tamrik.awaitCapture(before + 1);
        ASSERT_TRUE(succeeded(path));
        EXPECT_EQ(QImage(*path).size(), QSize(200, 100));
    }

    std::unique_ptr<VirtualDesktop> desktop;
};

} // namespace

TEST_F(Launch, AHotKeyOutOfRangeEndsItWithOneLineAndAbort)
{
    storePreferences(R"({"hotKeyCode": 4294967296})");
    auto app = App::start(*desktop, program());
    ASSERT_TRUE(succeeded(app));
    const auto ended = (*app)->waitForExit();
    ASSERT_TRUE(succeeded(ended));
    EXPECT_EQ(*ended, (Exit{SIGABRT, true}));
    EXPECT_EQ((*app)->errorOutput(),
              QStringLiteral("Tamrik: preference hotKeyCode is outside the unsigned 32-bit range: "
                             "4294967296\n"));
}

TEST_F(Launch, AKeyThatIsTakenIsOneLineAndTheMenuStillCaptures)
{
    auto first = Tamrik::startAndAwaitKeys(*desktop, program());
    ASSERT_TRUE(succeeded(first));
    // With a runtime folder of its own it does not know of the first one.
    const QTemporaryDir runtime;
    auto second =
        Tamrik::start(*desktop, program(), {{QStringLiteral("XDG_RUNTIME_DIR"), runtime.path()}});
    ASSERT_TRUE(succeeded(second));
    const QString line =
        QStringLiteral("Tamrik: hotkey registration failed (already taken by another app?)\n");
    ASSERT_TRUE(succeeded((*second)->app().awaitErrorOutput(line)));

    ASSERT_TRUE(succeeded(openMenu(**second)));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Down"))));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    EXPECT_TRUE(succeeded((*second)->awaitOverlay()));
    EXPECT_EQ((*second)->app().errorOutput(), line);
}

TEST_F(Launch, TheCaptureKeyCanBeChangedFromOutside)
{
    storePreferences(R"({"hotKeyCode": 2, "hotKeyModifiers": 4352})"); // Ctrl+Super+D
    auto tamrik = Tamrik::startAndAwaitKeys(*desktop, program());
    ASSERT_TRUE(succeeded(tamrik));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("ctrl+super+d"))));
    EXPECT_TRUE(succeeded((*tamrik)->awaitOverlay()));
    EXPECT_EQ((*tamrik)->app().errorOutput(), QString());
}

TEST_F(Launch, WithoutADisplayItSaysSo)
{
    auto app =
        App::start(*desktop, program(), {}, {{QStringLiteral("DISPLAY"), QStringLiteral(":4711")}});
    ASSERT_TRUE(succeeded(app));
    const auto ended = (*app)->waitForExit();
    ASSERT_TRUE(succeeded(ended));
    EXPECT_EQ(*ended, (Exit{1, false}));
    EXPECT_EQ((*app)->errorOutput(), QStringLiteral("Tamrik: cannot open display \":4711\"\n"));
}

TEST_F(Launch, ADamagedStoreIsKeptAsideAndTheProgramRuns)
{
    storePreferences("{\"recordMic\": tr");
    auto tamrik = Tamrik::startAndAwaitKeys(*desktop, program());
    ASSERT_TRUE(succeeded(tamrik));
    expectCaptures(**tamrik);
    EXPECT_TRUE(QFile::exists(desktop->home() +
                              QStringLiteral("/.config/tamrik/preferences.json.unreadable")));
    EXPECT_EQ((*tamrik)->app().errorOutput(), QString());
}

TEST_F(Launch, BothProgramsMayBeMovedTogether)
{
    const QTemporaryDir elsewhere;
    const QFileInfo built(program());
    const QString root = QFileInfo(built.path()).path();
    const QString tool = QStringLiteral("/libexec/tamrik");
    ASSERT_TRUE(QDir().mkpath(elsewhere.path() + QStringLiteral("/bin")));
    ASSERT_TRUE(QDir().mkpath(elsewhere.path() + tool));
    const QString moved = elsewhere.path() + QStringLiteral("/bin/tamrik");
    ASSERT_TRUE(QFile::copy(program(), moved));
    ASSERT_TRUE(QFile::copy(root + tool + QStringLiteral("/screencapture"),
                            elsewhere.path() + tool + QStringLiteral("/screencapture")));
    auto tamrik = Tamrik::startAndAwaitKeys(*desktop, moved);
    ASSERT_TRUE(succeeded(tamrik));
    expectCaptures(**tamrik);
}

TEST_F(Launch, AnInstalledProgramFindsItsTool)
{
    const QTemporaryDir prefix;
    const auto installed =
        run(QStringLiteral("cmake"),
            {QStringLiteral("--install"), QStringLiteral(TAMRIK_BUILD_DIR),
             QStringLiteral("--prefix"), prefix.path() + QStringLiteral("/any where")},
            QProcessEnvironment::systemEnvironment());
    ASSERT_TRUE(succeeded(installed));
    auto tamrik = Tamrik::startAndAwaitKeys(*desktop, prefix.path() +
                                                          QStringLiteral("/any where/bin/tamrik"));
    ASSERT_TRUE(succeeded(tamrik));
    expectCaptures(**tamrik);
}

TEST_F(Launch, AToolThatIsMissingIsOneLine)
{
    const QTemporaryDir elsewhere;
    ASSERT_TRUE(QDir().mkpath(elsewhere.path() + QStringLiteral("/bin")));
    const QString alone = elsewhere.path() + QStringLiteral("/bin/tamrik");
    ASSERT_TRUE(QFile::copy(program(), alone));
    auto tamrik = Tamrik::startAndAwaitKeys(*desktop, alone);
    ASSERT_TRUE(succeeded(tamrik));
    ASSERT_TRUE(succeeded((*tamrik)->pressCaptureKey()));
    ASSERT_TRUE(succeeded(input().drag({100, 100}, {300, 200})));
    EXPECT_TRUE(succeeded((*tamrik)->app().awaitErrorOutput(
        QStringLiteral("Tamrik: failed to launch screencapture: "))));
    EXPECT_EQ((*tamrik)->app().errorOutput().count(QLatin1Char('\n')), 1);
    EXPECT_TRUE((*tamrik)->captures().isEmpty());
    // The next one is tried afresh.
    EXPECT_TRUE(succeeded((*tamrik)->pressCaptureKey()));
}

TEST_F(Launch, QuitEndsIt)
{
    auto tamrik = Tamrik::startAndAwaitKeys(*desktop, program());
    ASSERT_TRUE(succeeded(tamrik));
    ASSERT_TRUE(succeeded(openMenu(**tamrik)));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Up")))); // the last item
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    const auto ended = (*tamrik)->app().waitForExit();
    ASSERT_TRUE(succeeded(ended));
    EXPECT_EQ(*ended, (Exit{0, false}));
    EXPECT_EQ((*tamrik)->app().errorOutput(), QString());
}

TEST_F(Launch, LaunchAtLoginWritesAnAutostartEntry)
{
    auto tamrik = Tamrik::startAndAwaitKeys(*desktop, program());
    ASSERT_TRUE(succeeded(tamrik));
    ASSERT_TRUE(succeeded(openMenu(**tamrik)));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Up"))));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Up")))); // "Launch at Login"
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the entry"), [&] {
        return QFile::exists(desktop->home() + QStringLiteral("/.config/autostart/tamrik.desktop"));
    })));
}

TEST_F(Launch, AFileManagerPastesTheFileItself)
{
    auto tamrik = Tamrik::startAndAwaitKeys(*desktop, program());
    ASSERT_TRUE(succeeded(tamrik));
    expectCaptures(**tamrik);
    const QString original = (*tamrik)->captures().front();
    const QString target = desktop->home() + QStringLiteral("/Pasted");
    ASSERT_TRUE(QDir().mkpath(target));
    ASSERT_TRUE(succeeded(waitFor(QStringLiteral("the picture on the clipboard"), [&] {
        return Clipboard(*desktop).read(QStringLiteral("image/png"));
    })));

    auto manager = openFileManager(*desktop, target);
    ASSERT_TRUE(succeeded(manager));
    ASSERT_TRUE(succeeded(input().click(manager->window.geometry.center())));
    ASSERT_TRUE(succeeded(Windows(*desktop).awaitActive(manager->window.id)));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("ctrl+v"))));

    const QString copy = target + QLatin1Char('/') + QFileInfo(original).fileName();
    const auto bytes = [](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the pasted file"), [&] {
        return QFile::exists(copy) && bytes(copy) == bytes(original);
    })));
}
