#include "Platform/Linux/X11/QtConnection.h"

#include <QGuiApplication>
#include <QtGui/qguiapplication_platform.h>

#include <cstring>

namespace {

constexpr std::uint32_t largestProperty = 64 * 1024; // in 32-bit values

QNativeInterface::QX11Application* x11Application()
{
    return qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
}

/// The number behind the dot of a display name, such as 1 in ":0.1".
int screenNumberFromEnvironment()
{
    int number = 0;
    char* host = nullptr;
    int display = 0;
    if (!xcb_parse_display(nullptr, &host, &display, &number))
        return 0;
    std::free(host);
    return number;
}

} // namespace

xcb_connection_t* X11::qtConnection()
{
    auto* app = x11Application();
    return app ? app->connection() : nullptr;
}

int X11::qtScreenNumber()
{
    static const int number = screenNumberFromEnvironment();
    return number;
}

const xcb_screen_t& X11::qtScreen()
{
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(qtConnection()));
    for (int i = 0; i < qtScreenNumber() && it.rem > 1; ++i)
        xcb_screen_next(&it);
    return *it.data;
}

xcb_atom_t X11::atom(const char* name)
{
    const auto cookie =
        xcb_intern_atom(qtConnection(), 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(qtConnection(), cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

std::vector<std::uint32_t> X11::property32(xcb_window_t window, const char* name)
{
    const auto cookie = xcb_get_property(qtConnection(), 0, window, atom(name),
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, largestProperty);
    const Reply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(qtConnection(), cookie, nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}
