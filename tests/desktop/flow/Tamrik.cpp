#include "desktop/flow/Tamrik.h"

#include "desktop/harness/Input.h"
#include "desktop/harness/Server.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <xcb/xcb.h>

using Desktop::Outcome;
using Desktop::Window;

namespace {

constexpr xcb_keycode_t sKey = 39;

/// Whether somebody has grabbed the capture hot key: the server refuses it to anybody else.
bool captureKeyIsTaken(const Desktop::Server& server)
{
    xcb_connection_t* connection = server.connection();
    constexpr std::uint16_t altShift = XCB_MOD_MASK_1 | XCB_MOD_MASK_SHIFT;
    const auto cookie = xcb_grab_key_checked(connection, 1, server.root(), altShift, sKey,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const Desktop::Reply<xcb_generic_error_t> error(xcb_request_check(connection, cookie));
    if (error)
        return true;
    xcb_ungrab_key(connection, sKey, server.root(), altShift);
    xcb_flush(connection);
    return false;
}

} // namespace

Tamrik::Tamrik(const Desktop::VirtualDesktop& desktop, std::unique_ptr<Desktop::App> app)
    : m_desktop(desktop)
    , m_app(std::move(app))
{
}

Outcome<std::unique_ptr<Tamrik>> Tamrik::start(const Desktop::VirtualDesktop& desktop,
                                               const QString& program,
                                               const QMap<QString, QString>& extra)
{
    // Asked for before the program starts, or the question itself could take the key from it.
    const bool takenBefore = captureKeyIsTaken(desktop.server());
    auto app = Desktop::App::start(desktop, program, {}, extra);
    if (!app)
        return app.failure();
    std::unique_ptr<Tamrik> tamrik(new Tamrik(desktop, std::move(*app)));
    if (takenBefore)
        return tamrik;
    // The program asks for its keys last, so a window of its tray icon or none says nothing.
    const auto ready = Desktop::waitFor(QStringLiteral("the event loop"), [&]() -> Outcome<void> {
        if (!tamrik->m_app->isRunning())
            return Desktop::Failure{tamrik->m_app->errorOutput()};
        if (!QFile::exists(QStringLiteral("/proc/%1/task").arg(tamrik->m_app->pid())))
            return Desktop::Failure{QStringLiteral("not running")};
        return captureKeyIsTaken(desktop.server()) ? Outcome<void>()
                                                   : Desktop::Failure{QStringLiteral("no hot key")};
    });
    if (!ready)
        return ready.failure();
    return tamrik;
}

QList<Window> Tamrik::overlay() const
{
    return Desktop::Windows(m_desktop).where([this](const Window& window) {
        return window.pid == m_app->pid() && window.isViewable && window.isOverrideRedirect &&
               window.isTopLevel && window.title == QLatin1String("Tamrik Selection");
    });
}

Outcome<void> Tamrik::awaitOverlay() const
{
    return Desktop::waitUntil(QStringLiteral("the overlay"),
                              [this] { return overlay().size() == m_desktop.options().screens; });
}

Outcome<void> Tamrik::awaitNoOverlay() const
{
    return Desktop::waitUntil(QStringLiteral("the overlay to go"),
                              [this] { return overlay().isEmpty(); });
}

Outcome<void> Tamrik::pressCaptureKey() const
{
    if (const auto pressed = Desktop::Input(m_desktop).key(QStringLiteral("alt+shift+s")); !pressed)
        return pressed;
    return awaitOverlay();
}

bool Tamrik::menuIsOpen() const
{
    return !Desktop::Windows(m_desktop)
                .where([this](const Window& window) {
                    return window.pid == m_app->pid() && window.isViewable &&
                           window.isOverrideRedirect && window.isTopLevel &&
                           window.title != QLatin1String("Tamrik Selection") &&
                           window.geometry.height() > 100;
                })
                .isEmpty();
}

QStringList Tamrik::captures() const
{
    const QDir folder(m_desktop.home() + QStringLiteral("/Pictures/Tamrik"));
    QStringList paths;
    for (const QString& name : folder.entryList(QDir::Files | QDir::Hidden, QDir::Name))
        paths += folder.filePath(name);
    return paths;
}

Outcome<QString> Tamrik::awaitCapture(int count) const
{
    return Desktop::waitFor(
        QStringLiteral("capture number %1").arg(count), [&]() -> Outcome<QString> {
            const QStringList paths = captures();
            if (paths.size() < count)
                return Desktop::Failure{QStringLiteral("there are %1").arg(paths.size())};
            return paths.back();
        });
}

QVariantMap Tamrik::preferences() const
{
    QFile file(m_desktop.home() + QStringLiteral("/.config/tamrik/preferences.json"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object().toVariantMap();
}
