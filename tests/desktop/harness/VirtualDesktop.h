#pragma once

#include "desktop/harness/Outcome.h"

#include <QtCore/QProcessEnvironment>
#include <QtCore/QSize>
#include <QtCore/QString>

#include <memory>

namespace Desktop {

class Server;

enum class WindowManager { Openbox, Xfwm4, None };
enum class Compositor { OfTheWindowManager, Picom, None };
enum class Tray { XEmbed, StatusNotifier, None };
enum class SecondAt { Right, Left, Above };

struct Options {
    int screens = 1;
    /// Pixels a point. The second screen's is the first one's unless it is said.
    double scale = 1;
    double secondScale = 0;
    WindowManager windowManager = WindowManager::Openbox;
    /// OfTheWindowManager is picom where the window manager has none.
    Compositor compositor = Compositor::OfTheWindowManager;
    Tray tray = Tray::XEmbed;
    /// In pixels.
    QSize size = {1920, 1080};
    QSize secondSize = {1280, 1024};
    SecondAt secondAt = SecondAt::Right;
};

/// The script that starts and stops desktops.
QString desktopScript();

/// A desktop of its own for a test: X server, window manager, compositor, tray, session bus, home
/// folder. Ends with the object, and also when the test program dies.
class VirtualDesktop {
public:
    static Outcome<std::unique_ptr<VirtualDesktop>> start(const Options& options = {});
    ~VirtualDesktop();
    VirtualDesktop(const VirtualDesktop&) = delete;
    VirtualDesktop& operator=(const VirtualDesktop&) = delete;

    /// Ends the desktop; the destructor does so otherwise.
    Outcome<void> stop();

    /// What a program needs to appear on this desktop.
    const QProcessEnvironment& environment() const { return m_environment; }
    QString display() const;
    QString home() const;
    const Options& options() const { return m_options; }
    /// The harness's own connection to the X server.
    Server& server() const { return *m_server; }

private:
    VirtualDesktop(QString name, const Options& options, QProcessEnvironment environment);

    QString m_name;
    Options m_options;
    QProcessEnvironment m_environment;
    std::unique_ptr<Server> m_server;
    bool m_running = true;
};

} // namespace Desktop
