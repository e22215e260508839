#include "desktop/harness/VirtualDesktop.h"

#include "desktop/harness/Commands.h"
#include "desktop/harness/Server.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <atomic>
#include <cstdio>

namespace Desktop {
namespace {

// The script itself waits at most ten seconds for each part.
constexpr std::chrono::milliseconds startPatience = std::chrono::seconds(40);

QString text(WindowManager windowManager)
{
    switch (windowManager) {
    case WindowManager::Openbox:
        return QStringLiteral("openbox");
    case WindowManager::Xfwm4:
        return QStringLiteral("xfwm4");
    case WindowManager::None:
        return QStringLiteral("none");
    }
    return {};
}

QString text(Tray tray)
{
    switch (tray) {
    case Tray::XEmbed:
        return QStringLiteral("xembed");
    case Tray::StatusNotifier:
        return QStringLiteral("sni");
    case Tray::None:
        return QStringLiteral("none");
    }
    return {};
}

QString text(SecondAt secondAt)
{
    switch (secondAt) {
    case SecondAt::Right:
        return QStringLiteral("right");
    case SecondAt::Left:
        return QStringLiteral("left");
    case SecondAt::Above:
        return QStringLiteral("above");
    }
    return {};
}

QString text(QSize size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

QStringList arguments(const Options& options, const QString& name)
{
    QStringList result{
        QStringLiteral("--name"), name, QStringLiteral("--screens"),
        QString::number(options.screens), QStringLiteral("--size"), text(options.size),
        QStringLiteral("--second-size"), text(options.secondSize), QStringLiteral("--second-at"),
        text(options.secondAt), QStringLiteral("--scale"), QString::number(options.scale),
        QStringLiteral("--wm"), text(options.windowManager), QStringLiteral("--tray"),
        text(options.tray),
        // Also a test that crashes, or that ctest kills, leaves no desktop behind.
        QStringLiteral("--until-exit-of"), QString::number(QCoreApplication::applicationPid())};
    if (options.secondScale > 0)
        result << QStringLiteral("--second-scale") << QString::number(options.secondScale);
    switch (options.compositor) {
    case Compositor::OfTheWindowManager:
        break;
    case Compositor::Picom:
        result << QStringLiteral("--compositor") << QStringLiteral("picom");
        break;
    case Compositor::None:
        result << QStringLiteral("--compositor") << QStringLiteral("none");
        break;
    }
    return result;
}

/// Unlike any other desktop's of this user, also of a test program that runs at the same time.
QString newName()
{
    static std::atomic<int> count = 0;
    return QStringLiteral("test-%1-%2").arg(QCoreApplication::applicationPid()).arg(++count);
}

} // namespace

QString desktopScript()
{
    return QStringLiteral(TAMRIK_SOURCE_DIR "/scripts/desktop");
}

VirtualDesktop::VirtualDesktop(QString name, const Options& options,
                               QProcessEnvironment environment)
    : m_name(std::move(name))
    , m_options(options)
    , m_environment(std::move(environment))
{
}

Outcome<std::unique_ptr<VirtualDesktop>> VirtualDesktop::start(const Options& options)
{
    const QString name = newName();
    // As a person would do it: the shell that evaluates the exports then tells its environment.
    const QString commands = QStringLiteral(
        R"(script=$1; shift; exports=$("$script" start "$@") || exit; eval "$exports"; exec env -0)");
    const auto output =
        run(QStringLiteral("bash"),
            QStringList{QStringLiteral("-c"), commands, QStringLiteral("bash"), desktopScript()} +
                arguments(options, name),
            QProcessEnvironment::systemEnvironment(), startPatience);
    if (!output)
        return output.failure();

    QProcessEnvironment environment;
    const QList<QByteArray> variables = output->split('\0');
    for (const QByteArray& variable : variables) {
        const auto equals = variable.indexOf('=');
        if (equals > 0)
            environment.insert(QString::fromLocal8Bit(variable.left(equals)),
                               QString::fromLocal8Bit(variable.mid(equals + 1)));
    }
    // What programs leave among the temporary files is this desktop's own too.
    const QString temporary =
        environment.value(QStringLiteral("HOME")) + QStringLiteral("/temporary");
    if (!QDir().mkpath(temporary))
        return Failure{QStringLiteral("there can be no folder for temporary files")};
    environment.insert(QStringLiteral("TMPDIR"), temporary);
    std::unique_ptr<VirtualDesktop> desktop(new VirtualDesktop(name, options, environment));
    const QFileInfo authority(environment.value(QStringLiteral("XAUTHORITY")));
    QFile cookie(authority.path() + QStringLiteral("/cookie"));
    if (!cookie.open(QIODevice::ReadOnly))
        return Failure{QStringLiteral("no cookie of the X server: ") + cookie.errorString()};
    auto server =
        Server::connect(desktop->display(), QByteArray::fromHex(cookie.readAll().trimmed()));
    if (!server)
        return server.failure();
    desktop->m_server = std::move(*server);
    return desktop;
}

VirtualDesktop::~VirtualDesktop()
{
    if (const auto stopped = stop(); !stopped)
        std::fprintf(stderr, "%s\n", qUtf8Printable(stopped.error()));
}

Outcome<void> VirtualDesktop::stop()
{
    if (!m_running)
        return {};
    m_running = false;
    m_server.reset();
    const auto output =
        run(desktopScript(), {QStringLiteral("stop"), QStringLiteral("--name"), m_name},
            QProcessEnvironment::systemEnvironment(), startPatience);
    if (!output)
        return output.failure();
    return {};
}

QString VirtualDesktop::display() const
{
    return m_environment.value(QStringLiteral("DISPLAY"));
}

QString VirtualDesktop::home() const
{
    return m_environment.value(QStringLiteral("HOME"));
}

} // namespace Desktop
