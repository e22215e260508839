#include "desktop/harness/Server.h"

#include <QtCore/QList>

#include <xcb/xcb.h>

#include <cstring>

namespace Desktop {

Server::Server(xcb_connection_t* connection, std::uint32_t root)
    : m_connection(connection)
    , m_root(root)
{
}

Server::~Server()
{
    xcb_disconnect(m_connection);
}

Outcome<std::unique_ptr<Server>> Server::connect(const QString& display, const QByteArray& cookie)
{
    QByteArray protocol("MIT-MAGIC-COOKIE-1");
    QByteArray data(cookie);
    xcb_auth_info_t authority{static_cast<int>(protocol.size()), protocol.data(),
                              static_cast<int>(data.size()), data.data()};
    int screen = 0;
    xcb_connection_t* connection =
        xcb_connect_to_display_with_auth_info(display.toLatin1().constData(), &authority, &screen);
    if (const int error = xcb_connection_has_error(connection)) {
        xcb_disconnect(connection);
        return Failure{
            QStringLiteral("no connection to the X server %1: error %2").arg(display).arg(error)};
    }
    const std::uint32_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    return std::unique_ptr<Server>(new Server(connection, root));
}

std::uint32_t Server::atom(const QByteArray& name) const
{
    const auto cookie =
        xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.constData());
    const Reply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : static_cast<std::uint32_t>(XCB_ATOM_NONE);
}

QByteArray Server::atomName(std::uint32_t atom) const
{
    const Reply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, atom), nullptr));
    return reply ? QByteArray(xcb_get_atom_name_name(reply.get()), reply->name_len) : QByteArray();
}

QByteArray Server::property(std::uint32_t window, const QByteArray& name) const
{
    constexpr std::uint32_t mostWords = 1 << 16;
    const auto cookie = xcb_get_property(m_connection, 0, window, atom(name),
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, mostWords);
    const Reply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply)
        return {}; // the window is gone
    return QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

QList<std::uint32_t> Server::numbers(std::uint32_t window, const QByteArray& name) const
{
    const QByteArray bytes = property(window, name);
    QList<std::uint32_t> result(bytes.size() / 4);
    if (!result.isEmpty())
        std::memcpy(result.data(), bytes.constData(), static_cast<std::size_t>(result.size()) * 4);
    return result;
}

bool Server::hasProperty(std::uint32_t window, const QByteArray& name) const
{
    return !property(window, name).isEmpty();
}

std::uint32_t Server::selectionOwner(const QByteArray& name) const
{
    const auto cookie = xcb_get_selection_owner(m_connection, atom(name));
    const Reply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(m_connection, cookie, nullptr));
    return reply ? reply->owner : 0;
}

} // namespace Desktop
