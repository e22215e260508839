// The least that a program can do when its hot key is pressed: show an empty window, and take it
// away when the key is pressed again. It holds Alt+Shift+S as Tamrik does.
//
// usage: bench_empty_window bypass|fullscreen|ordinary
//
//   bypass      a frameless window that covers a screen and that no window manager handles, as an
//               overlay's; one a screen
//   fullscreen  a window that the window manager makes full-screen
//   ordinary    a window of 800 x 600

#include "Platform/HotKeys.h"

#include <QApplication>
#include <QScreen>
#include <QWidget>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

using Windows = std::vector<std::unique_ptr<QWidget>>;

Windows coverScreens()
{
    Windows windows;
    for (QScreen* screen : QGuiApplication::screens()) {
        auto window = std::make_unique<QWidget>();
        window->setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint);
        window->setScreen(screen);
        window->setGeometry(screen->geometry());
        window->show();
        windows.push_back(std::move(window));
    }
    return windows;
}

Windows one(bool fullScreen)
{
    Windows windows;
    windows.push_back(std::make_unique<QWidget>());
    windows.back()->resize(800, 600);
    if (fullScreen)
        windows.back()->showFullScreen();
    else
        windows.back()->show();
    return windows;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QString kind = QApplication::arguments().value(1);
    if (kind != QStringLiteral("bypass") && kind != QStringLiteral("fullscreen") &&
        kind != QStringLiteral("ordinary"))
    {
        std::fputs("usage: bench_empty_window bypass|fullscreen|ordinary\n", stderr);
        return 2;
    }
    Windows windows;
    Platform::setHotKeyHandler([&](std::uint32_t) {
        if (!windows.empty())
            windows.clear();
        else if (kind == QStringLiteral("bypass"))
            windows = coverScreens();
        else
            windows = one(kind == QStringLiteral("fullscreen"));
    });
    constexpr std::uint32_t letterS = 1;
    if (!Platform::registerHotKey(
            letterS, Platform::HotKeyModifier::option | Platform::HotKeyModifier::shift, 1))
    {
        std::fputs("bench_empty_window: somebody else has the hot key\n", stderr);
        return 1;
    }
    return QApplication::exec();
}
