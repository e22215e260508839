#pragma once

#include "desktop/harness/Outcome.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstdint>
#include <cstdlib>
#include <memory>

struct xcb_connection_t;

namespace Desktop {

/// Frees a reply of the X server.
struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, FreeReply>;

/// The harness's own connection to the X server of a desktop.
class Server {
public:
    /// `cookie` is what the server lets in.
    static Outcome<std::unique_ptr<Server>> connect(const QString& display,
                                                    const QByteArray& cookie);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    xcb_connection_t* connection() const { return m_connection; }
    std::uint32_t root() const { return m_root; }

    std::uint32_t atom(const QByteArray& name) const;
    QByteArray atomName(std::uint32_t atom) const;
    /// The bytes of a window's property; empty when it has none.
    QByteArray property(std::uint32_t window, const QByteArray& name) const;
    /// The property's 32-bit values.
    QList<std::uint32_t> numbers(std::uint32_t window, const QByteArray& name) const;
    bool hasProperty(std::uint32_t window, const QByteArray& name) const;
    /// The window that owns a selection; 0 when none does.
    std::uint32_t selectionOwner(const QByteArray& name) const;
    bool selectionIsOwned(const QByteArray& name) const { return selectionOwner(name) != 0; }

private:
    Server(xcb_connection_t* connection, std::uint32_t root);

    xcb_connection_t* m_connection;
    std::uint32_t m_root;
};

} // namespace Desktop
