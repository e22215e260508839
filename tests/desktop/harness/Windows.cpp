#include "desktop/harness/Windows.h"

#include "desktop/harness/Commands.h"
#include "desktop/harness/Screen.h"
#include "desktop/harness/Server.h"
#include "desktop/harness/VirtualDesktop.h"

#include <xcb/xcb.h>

#include <algorithm>

namespace Desktop {
namespace {

QString title(const Server& server, std::uint32_t window)
{
    const QByteArray name = server.property(window, "_NET_WM_NAME");
    return name.isEmpty() ? QString::fromLatin1(server.property(window, "WM_NAME"))
                          : QString::fromUtf8(name);
}

/// Absent when the window went away meanwhile.
std::optional<Window> describe(const Server& server, std::uint32_t id)
{
    xcb_connection_t* connection = server.connection();
    const auto attributesCookie = xcb_get_window_attributes(connection, id);
    const auto geometryCookie = xcb_get_geometry(connection, id);
    const auto placeCookie = xcb_translate_coordinates(connection, id, server.root(), 0, 0);
    const Reply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(connection, attributesCookie, nullptr));
    const Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, geometryCookie, nullptr));
    const Reply<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(connection, placeCookie, nullptr));
    if (!attributes || !geometry || !place)
        return std::nullopt;

    Window window;
    window.id = id;
    window.title = title(server, id);
    const QList<QByteArray> names = server.property(id, "WM_CLASS").split('\0');
    window.instance = QString::fromLatin1(names.value(0));
    window.className = QString::fromLatin1(names.value(1));
    window.pid = server.numbers(id, "_NET_WM_PID").value(0);
    window.geometry = QRect(place->dst_x, place->dst_y, geometry->width, geometry->height);
    window.isViewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    window.isOverrideRedirect = attributes->override_redirect != 0;
    return window;
}

void collect(const Server& server, std::uint32_t parent, QList<Window>& windows)
{
    xcb_connection_t* connection = server.connection();
    const Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, parent), nullptr));
    if (!tree)
        return;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        if (auto window = describe(server, children[i])) {
            window->isTopLevel = parent == server.root();
            windows.append(*window);
            collect(server, window->id, windows);
        }
    }
}

QString list(const QList<Window>& windows)
{
    QStringList titles;
    for (const Window& window : windows)
        if (window.isViewable && !window.title.isEmpty())
            titles += u'"' + window.title + u'"';
    return QStringLiteral("there are ") + titles.join(QStringLiteral(", "));
}

Outcome<void> wmctrl(const VirtualDesktop& desktop, const QString& action, std::uint32_t window)
{
    const auto output =
        run(QStringLiteral("wmctrl"),
            {QStringLiteral("-i"), action, QStringLiteral("0x%1").arg(window, 0, 16)},
            desktop.environment());
    if (!output)
        return output.failure();
    return {};
}

} // namespace

QList<Window> Windows::all() const
{
    QList<Window> windows;
    collect(m_desktop.server(), m_desktop.server().root(), windows);
    return windows;
}

QList<Window> Windows::where(const Predicate& predicate) const
{
    QList<Window> found;
    const QList<Window> windows = all();
    std::copy_if(windows.begin(), windows.end(), std::back_inserter(found), predicate);
    return found;
}

QList<Window> Windows::overrideRedirects() const
{
    const auto screen = Screen(m_desktop).bounds();
    return where([&](const Window& window) {
        return window.isTopLevel && window.isViewable && window.isOverrideRedirect &&
               (!screen || screen->intersects(window.geometry));
    });
}

QList<std::uint32_t> Windows::clientList() const
{
    return m_desktop.server().numbers(m_desktop.server().root(), "_NET_CLIENT_LIST");
}

Outcome<Window> Windows::await(const QString& what, const Predicate& predicate,
                               std::chrono::milliseconds deadline) const
{
    const auto attempt = [&]() -> Outcome<Window> {
        const QList<Window> windows = all();
        for (const Window& window : windows)
            if (window.isViewable && predicate(window))
                return window;
        return Failure{list(windows)};
    };
    return waitFor(what, attempt, deadline);
}

Outcome<Window> Windows::awaitTitle(const QString& title, std::chrono::milliseconds deadline) const
{
    return await(
        QStringLiteral("a window titled \"%1\"").arg(title),
        [&](const Window& window) { return window.title == title; }, deadline);
}

Outcome<Window> Windows::awaitClass(const QString& className,
                                    std::chrono::milliseconds deadline) const
{
    return await(
        QStringLiteral("a window of class %1").arg(className),
        [&](const Window& window) { return window.className == className; }, deadline);
}

Outcome<Window> Windows::awaitProcess(qint64 pid, std::chrono::milliseconds deadline) const
{
    return await(
        QStringLiteral("a window of process %1").arg(pid),
        [&](const Window& window) { return window.pid == pid; }, deadline);
}

Outcome<void> Windows::awaitNone(const QString& what, const Predicate& predicate,
                                 std::chrono::milliseconds deadline) const
{
    return waitUntil(
        QStringLiteral("the end of ") + what,
        [&] {
            return where(
                       [&](const Window& window) { return window.isViewable && predicate(window); })
                .isEmpty();
        },
        deadline);
}

std::uint32_t Windows::active() const
{
    return m_desktop.server().numbers(m_desktop.server().root(), "_NET_ACTIVE_WINDOW").value(0);
}

std::uint32_t Windows::focused() const
{
    const Server& server = m_desktop.server();
    xcb_connection_t* connection = server.connection();
    const Reply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    if (!focus || focus->focus == XCB_NONE || focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT)
        return focus ? focus->focus : 0;
    std::uint32_t window = focus->focus;
    while (window != server.root() && server.property(window, "WM_STATE").isEmpty()) {
        const Reply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
        if (!tree || tree->parent == server.root() || tree->parent == XCB_NONE)
            break;
        window = tree->parent;
    }
    return window;
}

Outcome<void> Windows::awaitActive(std::uint32_t window, std::chrono::milliseconds deadline) const
{
    const auto attempt = [&]() -> Outcome<void> {
        const std::uint32_t now = active();
        if (now == window)
            return {};
        return Failure{QStringLiteral("0x%1 is active").arg(now, 0, 16)};
    };
    return waitFor(QStringLiteral("window 0x%1 to be active").arg(window, 0, 16), attempt,
                   deadline);
}

Outcome<void> Windows::awaitFocused(std::uint32_t window, std::chrono::milliseconds deadline) const
{
    const auto attempt = [&]() -> Outcome<void> {
        const std::uint32_t now = focused();
        if (now == window)
            return {};
        return Failure{QStringLiteral("0x%1 has it").arg(now, 0, 16)};
    };
    return waitFor(QStringLiteral("the focus of window 0x%1").arg(window, 0, 16), attempt,
                   deadline);
}

Outcome<Window> Windows::awaitTitleInUse(const QString& title) const
{
    const auto window = awaitTitle(title);
    if (!window)
        return window.failure();
    if (const auto active = awaitActive(window->id); !active)
        return active.failure();
    if (const auto focused = awaitFocused(window->id); !focused)
        return focused.failure();
    // The window manager may have moved it since it was found.
    return awaitTitle(title);
}

Outcome<void> Windows::focus(std::uint32_t window) const
{
    xcb_connection_t* connection = m_desktop.server().connection();
    xcb_set_input_focus(connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    xcb_flush(connection);
    return awaitFocused(window);
}

Outcome<void> Windows::activate(std::uint32_t window) const
{
    return wmctrl(m_desktop, QStringLiteral("-a"), window);
}

Outcome<void> Windows::close(std::uint32_t window) const
{
    return wmctrl(m_desktop, QStringLiteral("-c"), window);
}

QStringList Windows::atomNames(std::uint32_t window, const QByteArray& property) const
{
    QStringList names;
    const QList<std::uint32_t> atoms = m_desktop.server().numbers(window, property);
    for (const std::uint32_t atom : atoms)
        names += QString::fromLatin1(m_desktop.server().atomName(atom));
    return names;
}

} // namespace Desktop
