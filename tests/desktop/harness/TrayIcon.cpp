#include "desktop/harness/TrayIcon.h"

#include "desktop/harness/Commands.h"
#include "desktop/harness/Server.h"
#include "desktop/harness/VirtualDesktop.h"
#include "desktop/harness/Windows.h"

#include <QtCore/QRegularExpression>

namespace Desktop {
namespace {

/// An XEmbed icon is a window of the process, which the panel has taken into its own. Qt marks all
/// windows as ones that could be.
Outcome<QRect> findEmbeddedWindow(const VirtualDesktop& desktop, qint64 pid)
{
    const QList<std::uint32_t> managed = Windows(desktop).clientList();
    const QList<Window> icons = Windows(desktop).where([&](const Window& window) {
        return window.pid == pid && window.isViewable && !window.isTopLevel &&
               !managed.contains(window.id) &&
               desktop.server().hasProperty(window.id, "_XEMBED_INFO");
    });
    if (icons.isEmpty())
        return Failure{QStringLiteral("process %1 has no window in the tray").arg(pid)};
    return icons.first().geometry;
}

/// Calls a method on the desktop's session bus.
Outcome<QString> call(const VirtualDesktop& desktop, const QString& service, const QString& path,
                      const QString& method, const QStringList& arguments)
{
    const auto reply =
        run(QStringLiteral("gdbus"),
            QStringList{QStringLiteral("call"), QStringLiteral("--session"),
                        QStringLiteral("--dest"), service, QStringLiteral("--object-path"), path,
                        QStringLiteral("--method"), method} +
                arguments,
            desktop.environment());
    if (!reply)
        return reply.failure();
    return QString::fromUtf8(*reply).trimmed();
}

/// The bus names of the items in the tray.
Outcome<QStringList> notifierItems(const VirtualDesktop& desktop)
{
    const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
    const auto reply = call(desktop, watcher, QStringLiteral("/StatusNotifierWatcher"),
                            QStringLiteral("org.freedesktop.DBus.Properties.Get"),
                            {watcher, QStringLiteral("RegisteredStatusNotifierItems")});
    if (!reply)
        return reply.failure();
    // (<[':1.6/StatusNotifierItem', 'org.example.Item/StatusNotifierItem']>,)
    static const QRegularExpression item(QStringLiteral("'([^'/]+)/[^']*'"));
    QStringList names;
    for (auto match = item.globalMatch(*reply); match.hasNext();)
        names += match.next().captured(1);
    return names;
}

Outcome<qint64> processOf(const VirtualDesktop& desktop, const QString& busName)
{
    const auto reply =
        call(desktop, QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
             QStringLiteral("org.freedesktop.DBus.GetConnectionUnixProcessID"), {busName});
    if (!reply)
        return reply.failure();
    // (uint32 1234,)
    static const QRegularExpression number(QStringLiteral("uint32 (\\d+)"));
    return number.match(*reply).captured(1).toLongLong();
}

/// The panel tells nobody where it shows an item. But its tray is a window with as many squares, as
/// high as itself, as there are items. Their order follows nothing that can be asked for, so only a
/// single one is found.
Outcome<QRect> findNotifierItem(const VirtualDesktop& desktop, qint64 pid)
{
    const auto items = notifierItems(desktop);
    if (!items)
        return items.failure();
    if (items->size() != 1)
        return Failure{QStringLiteral("the tray has %1 items, not one").arg(items->size())};
    const auto owner = processOf(desktop, items->first());
    if (!owner)
        return owner.failure();
    if (*owner != pid)
        return Failure{QStringLiteral("process %1 has no item in the tray").arg(pid)};

    const QList<Window> trays = Windows(desktop).where([&](const Window& window) {
        return window.className == QStringLiteral("Wrapper-2.0") && window.isViewable &&
               desktop.server().hasProperty(window.id, "_XEMBED_INFO");
    });
    if (trays.size() != 1)
        return Failure{
            QStringLiteral("the panel has %1 windows that may be its tray").arg(trays.size())};
    const QRect tray = trays.first().geometry;
    const int side = tray.height();
    if (tray.width() < side)
        return Failure{QStringLiteral("the tray does not show the item yet")};
    return QRect(tray.right() + 1 - side, tray.top(), side, side);
}

} // namespace

Outcome<QRect> findTrayIcon(const VirtualDesktop& desktop, qint64 pid)
{
    switch (desktop.options().tray) {
    case Tray::XEmbed:
        return findEmbeddedWindow(desktop, pid);
    case Tray::StatusNotifier:
        return findNotifierItem(desktop, pid);
    case Tray::None:
        break;
    }
    return Failure{QStringLiteral("the desktop has no tray")};
}

Outcome<QRect> awaitTrayIcon(const VirtualDesktop& desktop, qint64 pid,
                             std::chrono::milliseconds deadline)
{
    // A panel first takes an icon in and then finds a place for it, moving others: it is there when
    // it has not moved for a while.
    constexpr std::chrono::milliseconds settled(100);
    QRect before;
    std::chrono::steady_clock::time_point since;
    const auto attempt = [&]() -> Outcome<QRect> {
        const auto icon = findTrayIcon(desktop, pid);
        if (!icon)
            return icon;
        const auto now = std::chrono::steady_clock::now();
        if (*icon != before)
            since = now;
        before = *icon;
        return now - since >= settled ? icon
                                      : Outcome<QRect>(Failure{QStringLiteral("it still moves")});
    };
    return waitFor(QStringLiteral("the tray icon of process %1").arg(pid), attempt, deadline);
}

} // namespace Desktop
