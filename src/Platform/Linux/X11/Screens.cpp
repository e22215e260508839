#include "Platform/Linux/X11/Screens.h"

#include "Platform/Linux/X11/DesktopScale.h"
#include "Platform/Linux/X11/Handles.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <xcb/randr.h>
#include <xcb/xcb.h>

using ScreenTable::PixelRect;
using ScreenTable::Screen;

namespace X11 {

namespace {

constexpr std::uint32_t longestProperty = 1 << 18; // in units of 4 bytes: 1 MiB

std::string atomName(xcb_connection_t* connection, xcb_atom_t atom)
{
    const Reply<xcb_get_atom_name_reply_t> name(
        xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, atom), nullptr));
    if (!name)
        return {};
    return {xcb_get_atom_name_name(name.get()),
            static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get()))};
}

bool hasRandr(xcb_connection_t* connection)
{
    const xcb_query_extension_reply_t* const extension =
        xcb_get_extension_data(connection, &xcb_randr_id);
    return extension && extension->present;
}

/// With no frames and scales yet, the primary one first.
std::vector<Screen> monitors(xcb_connection_t* connection, xcb_window_t root)
{
    std::vector<Screen> found;
    if (!hasRandr(connection))
        return found;
    // Sent together; a server older than 1.5 answers the second one with an error.
    const auto version = xcb_randr_query_version(connection, 1, 5);
    const auto list = xcb_randr_get_monitors(connection, root, true);
    xcb_discard_reply(connection, version.sequence);
    const Reply<xcb_randr_get_monitors_reply_t> reply(
        xcb_randr_get_monitors_reply(connection, list, nullptr));
    if (!reply)
        return found;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem;
         xcb_randr_monitor_info_next(&each))
    {
        const xcb_randr_monitor_info_t& monitor = *each.data;
        if (monitor.width == 0 || monitor.height == 0)
            continue;
        Screen screen;
        screen.name = atomName(connection, monitor.name);
        screen.pixels = {monitor.x, monitor.y, monitor.width, monitor.height};
        found.insert(monitor.primary ? found.begin() : found.end(), std::move(screen));
    }
    return found;
}

std::string textOf(const xcb_get_property_reply_t& property)
{
    if (property.format != 8)
        return {};
    return {static_cast<const char*>(xcb_get_property_value(&property)),
            static_cast<std::size_t>(xcb_get_property_value_length(&property))};
}

} // namespace

std::vector<Screen> asTable(std::vector<Screen> monitors, double scale)
{
    if (monitors.empty())
        return monitors;
    const PixelRect primary = monitors.front().pixels;
    for (Screen& screen : monitors) {
        const auto points = [scale](std::int32_t pixels) {
            return std::max(1.0, std::round(pixels / scale));
        };
        screen.frame = {static_cast<double>(screen.pixels.x) - primary.x,
                        static_cast<double>(screen.pixels.y) - primary.y,
                        points(screen.pixels.width), points(screen.pixels.height)};
        screen.scale = scale;
    }
    return monitors;
}

Result<std::vector<Screen>> screens(const Connection& connection)
{
    xcb_connection_t* const xcb = connection.get();
    const xcb_screen_t& root = connection.screen();
    const xcb_get_property_cookie_t resources = xcb_get_property(
        xcb, false, root.root, XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 0, longestProperty);
    std::vector<Screen> found = monitors(xcb, root.root);
    const Reply<xcb_get_property_reply_t> property(xcb_get_property_reply(xcb, resources, nullptr));
    if (!property)
        return connection.lostOr("cannot read the screens from the X server");

    if (found.empty())
        found.push_back({"root", {}, {0, 0, root.width_in_pixels, root.height_in_pixels}, 1});
    return asTable(std::move(found), desktopScale(textOf(*property)));
}

} // namespace X11
