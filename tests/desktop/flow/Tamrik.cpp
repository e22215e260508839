#include "desktop/flow/Tamrik.h"

#include "desktop/harness/Input.h"
#include "desktop/harness/Server.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

#include <xcb/res.h>
#include <xcb/xcb.h>

using Desktop::Outcome;
using Desktop::Window;

namespace {

/// Three hot keys, each under every state of two locks.
constexpr std::uint32_t grabsOfAllHotKeys = 3 * 4;

/// How many keys a process has grabbed on the server, by the X-Resource extension. Only looks:
/// trying to grab a key oneself could take it from the program.
std::uint32_t grabbedKeys(const Desktop::Server& server, qint64 pid)
{
    xcb_connection_t* connection = server.connection();
    const xcb_res_client_id_spec_t everybody = {0, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto idsCookie = xcb_res_query_client_ids(connection, 1, &everybody);
    const Desktop::Reply<xcb_res_query_client_ids_reply_t> ids(
        xcb_res_query_client_ids_reply(connection, idsCookie, nullptr));
    if (!ids)
        return 0;
    std::uint32_t grabs = 0;
    auto client = xcb_res_query_client_ids_ids_iterator(ids.get());
    for (; client.rem > 0; xcb_res_client_id_value_next(&client)) {
        if (xcb_res_client_id_value_value_length(client.data) < 1 ||
            *xcb_res_client_id_value_value(client.data) != static_cast<std::uint32_t>(pid))
            continue;
        const auto cookie = xcb_res_query_client_resources(connection, client.data->spec.client);
        const Desktop::Reply<xcb_res_query_client_resources_reply_t> resources(
            xcb_res_query_client_resources_reply(connection, cookie, nullptr));
        if (!resources)
            continue;
        auto type = xcb_res_query_client_resources_types_iterator(resources.get());
        for (; type.rem > 0; xcb_res_type_next(&type)) {
            if (server.atomName(type.data->resource_type) == "PASSIVE GRAB")
                grabs += type.data->count;
        }
    }
    return grabs;
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
    auto app = Desktop::App::start(desktop, program, {}, extra);
    if (!app)
        return app.failure();
    return std::unique_ptr<Tamrik>(new Tamrik(desktop, std::move(*app)));
}

Outcome<std::unique_ptr<Tamrik>> Tamrik::startAndAwaitKeys(const Desktop::VirtualDesktop& desktop,
                                                           const QString& program,
                                                           const QMap<QString, QString>& extra)
{
    auto tamrik = start(desktop, program, extra);
    if (!tamrik)
        return tamrik;
    const auto ready = Desktop::waitFor(QStringLiteral("the hot keys"), [&]() -> Outcome<void> {
        Desktop::App& app = (*tamrik)->app();
        if (!app.isRunning())
            return Desktop::Failure{QStringLiteral("it ended: ") + app.errorOutput()};
        const std::uint32_t grabs = grabbedKeys(desktop.server(), app.pid());
        if (grabs < grabsOfAllHotKeys)
            return Desktop::Failure{QStringLiteral("it has %1 grabs").arg(grabs)};
        return {};
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

QList<Window> Tamrik::chips() const
{
    return Desktop::Windows(m_desktop).where([this](const Window& window) {
        return window.pid == m_app->pid() && window.isViewable && window.isOverrideRedirect &&
               window.isTopLevel && window.title == QLatin1String("Tamrik Chip");
    });
}

QRect Tamrik::chipIn(const Window& window, double scale)
{
    constexpr double shadow = 18; // points on every side
    const auto margin = static_cast<int>(std::lround(shadow * scale));
    return window.geometry.adjusted(margin, margin, -margin, -margin);
}

Outcome<void> Tamrik::awaitChips(int count) const
{
    return Desktop::waitFor(QStringLiteral("%1 chips").arg(count), [&]() -> Outcome<void> {
        const auto now = chips().size();
        return now == count ? Outcome<void>()
                            : Desktop::Failure{QStringLiteral("there are %1").arg(now)};
    });
}

QList<QRect> Tamrik::chipPlaces() const
{
    QList<QRect> places;
    for (const Window& window : chips())
        places += chipIn(window, m_desktop.options().scale);
    std::sort(places.begin(), places.end(),
              [](const QRect& a, const QRect& b) { return a.bottom() > b.bottom(); });
    return places;
}

Outcome<QList<QRect>> Tamrik::awaitRestingChips(int count) const
{
    // An animation shows nothing at first, and moves on within a frame or two then.
    constexpr auto restTime = std::chrono::milliseconds(150);
    QList<QRect> before;
    auto since = std::chrono::steady_clock::now();
    const auto rests = [&]() -> Outcome<QList<QRect>> {
        const QList<QRect> now = chipPlaces();
        const auto instant = std::chrono::steady_clock::now();
        if (std::exchange(before, now) != now)
            since = instant;
        if (instant - since >= restTime && now.size() == count)
            return now;
        return Desktop::Failure{QStringLiteral("there are %1").arg(now.size())};
    };
    return Desktop::waitFor(QStringLiteral("%1 chips at rest").arg(count), rests);
}

Outcome<void> Tamrik::putChipsAway() const
{
    if (const auto any =
            Desktop::waitUntil(QStringLiteral("a chip"), [this] { return !chips().isEmpty(); });
        !any)
        return any;
    xcb_connection_t* connection = m_desktop.server().connection();
    for (const Window& chip : chips())
        xcb_unmap_window(connection, chip.id);
    xcb_flush(connection);
    return Desktop::waitUntil(QStringLiteral("the chips to go"),
                              [this] { return chips().isEmpty(); });
}

Outcome<void> Tamrik::dismissChips() const
{
    const int cross = qRound(17 * m_desktop.options().scale);
    for (int left = static_cast<int>(chips().size()); left > 0; --left) {
        const auto resting = awaitRestingChips(left);
        if (!resting)
            return resting.failure();
        if (const auto clicked =
                Desktop::Input(m_desktop).click(resting->front().topLeft() + QPoint(cross, cross));
            !clicked)
            return clicked;
    }
    return awaitChips(0);
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

Outcome<void> Tamrik::pressRecordKey() const
{
    if (const auto pressed = Desktop::Input(m_desktop).key(QStringLiteral("alt+shift+r")); !pressed)
        return pressed;
    return awaitOverlay();
}

QList<Window> Tamrik::menus() const
{
    return Desktop::Windows(m_desktop).where([this](const Window& window) {
        return window.pid == m_app->pid() && window.isViewable && window.isOverrideRedirect &&
               window.isTopLevel && !window.title.startsWith(QLatin1String("Tamrik ")) &&
               window.geometry.height() > 100;
    });
}

Outcome<Window> Tamrik::awaitMenu() const
{
    return Desktop::waitFor(QStringLiteral("the menu"), [this]() -> Outcome<Window> {
        const QList<Window> open = menus();
        if (open.size() != 1)
            return Desktop::Failure{QStringLiteral("there are %1").arg(open.size())};
        return open.front();
    });
}

Outcome<void> Tamrik::awaitNoMenu() const
{
    return Desktop::waitUntil(QStringLiteral("the menu to go"), [this] { return !menuIsOpen(); });
}

Outcome<void> Tamrik::startAgain(const QString& program, const QMap<QString, QString>& extra) const
{
    auto again = Desktop::App::start(m_desktop, program, {}, extra);
    if (!again)
        return again.failure();
    const auto ended = (*again)->waitForExit();
    if (!ended)
        return ended.failure();
    const QString said = (*again)->output() + (*again)->errorOutput();
    if (*ended != Desktop::Exit{0, false} || !said.isEmpty()) {
        return Desktop::Failure{QStringLiteral("the second start ended with %1 and said: %2")
                                    .arg(ended->code)
                                    .arg(said)};
    }
    return {};
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
