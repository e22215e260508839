#include "Movie/Screen/PointerTracker.h"

#include "Platform/Linux/X11/Handles.h"

#include <utility>

#include <xcb/xcb.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

using X11::Reply;

namespace {

bool isWheel(std::uint32_t button)
{
    return button >= 4 && button <= 7;
}

} // namespace

PointerTracker::PointerTracker(const X11::Connection& connection)
    : m_connection(&connection)
{
    watchImages();
    watchDevices();
}

void PointerTracker::watchImages()
{
    xcb_connection_t* const xcb = m_connection->get();
    const xcb_query_extension_reply_t* const fixes = xcb_get_extension_data(xcb, &xcb_xfixes_id);
    if (!fixes || !fixes->present)
        return;
    const Reply<xcb_xfixes_query_version_reply_t> version(
        xcb_xfixes_query_version_reply(xcb, xcb_xfixes_query_version(xcb, 5, 0), nullptr));
    if (!version || version->major_version < 1)
        return;
    m_imageEvent = fixes->first_event + XCB_XFIXES_CURSOR_NOTIFY;
    xcb_xfixes_select_cursor_input(xcb, m_connection->screen().root,
                                   XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
}

/// Raw events come whatever program has the pointer, and from version 2.1 on also while one has it
/// to itself.
void PointerTracker::watchDevices()
{
    xcb_connection_t* const xcb = m_connection->get();
    const xcb_query_extension_reply_t* const input = xcb_get_extension_data(xcb, &xcb_input_id);
    if (!input || !input->present)
        return;
    const Reply<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(xcb, xcb_input_xi_query_version(xcb, 2, 2), nullptr));
    if (!version || version->major_version < 2)
        return;
    m_devicesOpcode = input->major_opcode;
    const struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } wanted = {{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
                    XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE |
                    XCB_INPUT_XI_EVENT_MASK_RAW_MOTION};
    xcb_input_xi_select_events(xcb, m_connection->screen().root, 1, &wanted.head);
}

void PointerTracker::see(const void* event)
{
    const int type = static_cast<const xcb_generic_event_t*>(event)->response_type & 0x7f;
    if (type == m_imageEvent) {
        m_isImageOld = true;
        m_hasNews = true;
        return;
    }
    if (type != XCB_GE_GENERIC)
        return;
    const auto& generic = *static_cast<const xcb_ge_generic_event_t*>(event);
    if (generic.extension != m_devicesOpcode)
        return;
    // A raw press, release and motion are laid out alike.
    const auto& raw = *static_cast<const xcb_input_raw_button_press_event_t*>(event);
    seeRaw(generic.event_type, raw.detail);
}

void PointerTracker::seeRaw(int type, std::uint32_t detail)
{
    const bool isPress = type == XCB_INPUT_RAW_BUTTON_PRESS;
    if (isPress || type == XCB_INPUT_RAW_BUTTON_RELEASE) {
        if (!isWheel(detail))
            m_buttons.push_back({static_cast<int>(detail), isPress});
    }
    m_hasNews = true;
}

std::vector<PointerTracker::Button> PointerTracker::takeButtons()
{
    return std::exchange(m_buttons, {});
}

unsigned PointerTracker::ask()
{
    m_hasNews = false;
    return xcb_query_pointer(m_connection->get(), m_connection->screen().root).sequence;
}

std::optional<PointerTracker::Place> PointerTracker::reply(unsigned question)
{
    const Reply<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(m_connection->get(), {question}, nullptr));
    if (!reply || !reply->same_screen)
        return std::nullopt;
    return Place{reply->root_x, reply->root_y};
}

const PointerTracker::Image& PointerTracker::image()
{
    if (!m_isImageOld || m_imageEvent < 0)
        return m_image;
    m_isImageOld = false;
    ++m_imageNumber;
    xcb_connection_t* const xcb = m_connection->get();
    const Reply<xcb_xfixes_get_cursor_image_reply_t> reply(
        xcb_xfixes_get_cursor_image_reply(xcb, xcb_xfixes_get_cursor_image(xcb), nullptr));
    if (!reply) {
        m_image = {};
        return m_image;
    }
    const std::uint32_t* const pixels = xcb_xfixes_get_cursor_image_cursor_image(reply.get());
    const int count = xcb_xfixes_get_cursor_image_cursor_image_length(reply.get());
    m_image = {{reply->width, reply->height, {pixels, pixels + count}}, reply->xhot, reply->yhot};
    return m_image;
}
