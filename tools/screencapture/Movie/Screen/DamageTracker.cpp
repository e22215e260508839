#include "Movie/Screen/DamageTracker.h"

#include "Platform/Linux/X11/Handles.h"

#include <xcb/damage.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

using X11::Reply;

std::optional<DamageTracker> DamageTracker::create(const X11::Connection& connection)
{
    xcb_connection_t* const xcb = connection.get();
    const xcb_query_extension_reply_t* const extension =
        xcb_get_extension_data(xcb, &xcb_damage_id);
    const xcb_query_extension_reply_t* const fixes = xcb_get_extension_data(xcb, &xcb_xfixes_id);
    if (!extension || !extension->present || !fixes || !fixes->present)
        return std::nullopt;
    // Both want to be told the version before anything else.
    const auto damageVersion = xcb_damage_query_version(xcb, 1, 1);
    const auto fixesVersion = xcb_xfixes_query_version(xcb, 5, 0);
    const Reply<xcb_damage_query_version_reply_t> damage(
        xcb_damage_query_version_reply(xcb, damageVersion, nullptr));
    const Reply<xcb_xfixes_query_version_reply_t> region(
        xcb_xfixes_query_version_reply(xcb, fixesVersion, nullptr));
    if (!damage || !region || region->major_version < 2)
        return std::nullopt;
    return DamageTracker(connection, extension->first_event + XCB_DAMAGE_NOTIFY);
}

DamageTracker::DamageTracker(const X11::Connection& connection, int event)
    : m_connection(&connection)
    , m_event(event)
    , m_damage(xcb_generate_id(connection.get()))
    , m_region(xcb_generate_id(connection.get()))
{
    xcb_connection_t* const xcb = connection.get();
    xcb_damage_create(xcb, m_damage, connection.screen().root, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    xcb_xfixes_create_region(xcb, m_region, 0, nullptr);
}

unsigned DamageTracker::ask() const
{
    xcb_connection_t* const xcb = m_connection->get();
    xcb_damage_subtract(xcb, m_damage, XCB_NONE, m_region);
    return xcb_xfixes_fetch_region(xcb, m_region).sequence;
}

std::vector<ScreenTable::PixelRect> DamageTracker::reply(unsigned question) const
{
    const Reply<xcb_xfixes_fetch_region_reply_t> region(
        xcb_xfixes_fetch_region_reply(m_connection->get(), {question}, nullptr));
    if (!region)
        return {};
    std::vector<ScreenTable::PixelRect> changed;
    const xcb_rectangle_t* const rectangles = xcb_xfixes_fetch_region_rectangles(region.get());
    const int count = xcb_xfixes_fetch_region_rectangles_length(region.get());
    changed.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        changed.push_back(
            {rectangles[i].x, rectangles[i].y, rectangles[i].width, rectangles[i].height});
    return changed;
}
