#include "Platform/Linux/X11/QtConnection.h"

#include "Platform/Linux/X11/DisplayName.h"

#include <QGuiApplication>
#include <QtGui/qguiapplication_platform.h>

#include <cstring>
#include <map>
#include <string>

namespace {

constexpr std::uint32_t largestProperty = 64 * 1024; // in 32-bit values

QNativeInterface::QX11Application* x11Application()
{
    return qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
}

X11::Reply<xcb_query_extension_reply_t> queryExtension(const char* name)
{
    const auto cookie = xcb_query_extension(X11::qtConnection(),
                                            static_cast<std::uint16_t>(std::strlen(name)), name);
    return X11::Reply<xcb_query_extension_reply_t>(
        xcb_query_extension_reply(X11::qtConnection(), cookie, nullptr));
}

} // namespace

xcb_connection_t* X11::qtConnection()
{
    auto* app = x11Application();
    return app ? app->connection() : nullptr;
}

int X11::qtScreenNumber()
{
    static const int number = displayScreenNumber();
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
    static std::map<std::string, xcb_atom_t, std::less<>> known;
    if (const auto found = known.find(name); found != known.end())
        return found->second;
    const auto cookie =
        xcb_intern_atom(qtConnection(), 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(qtConnection(), cookie, nullptr));
    if (!reply)
        return XCB_ATOM_NONE;
    known.emplace(name, reply->atom);
    return reply->atom;
}

std::uint8_t X11::firstEventOf(const char* extension)
{
    const auto reply = queryExtension(extension);
    return reply && reply->present ? reply->first_event : std::uint8_t{0};
}

std::uint8_t X11::opcodeOf(const char* extension)
{
    const auto reply = queryExtension(extension);
    return reply && reply->present ? reply->major_opcode : std::uint8_t{0};
}

std::vector<std::uint32_t> X11::property32(xcb_window_t window, const char* name)
{
    return properties32({window}, name).front();
}

std::vector<std::vector<std::uint32_t>> X11::properties32(const std::vector<xcb_window_t>& windows,
                                                          const char* name)
{
    std::vector<xcb_get_property_cookie_t> cookies;
    cookies.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        cookies.push_back(xcb_get_property(qtConnection(), 0, window, atom(name),
                                           XCB_GET_PROPERTY_TYPE_ANY, 0, largestProperty));
    }
    std::vector<std::vector<std::uint32_t>> results;
    results.reserve(cookies.size());
    for (const xcb_get_property_cookie_t cookie : cookies) {
        const Reply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(qtConnection(), cookie, nullptr));
        std::vector<std::uint32_t> values;
        if (reply && reply->format == 32) {
            const auto* first =
                static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
            values.assign(first, first + xcb_get_property_value_length(reply.get()) / 4);
        }
        results.push_back(std::move(values));
    }
    return results;
}
