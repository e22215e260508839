#include "Platform/Backdrop.h"

#include "Platform/Linux/NativeScreen.h"
#include "Platform/Linux/X11/QtConnection.h"

#include <vector>

namespace {

/// Whether a compositing manager runs: it owns a selection named after the screen (Extended Window
/// Manager Hints 1.5, "Compositing Managers").
bool composited()
{
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(X11::qtScreenNumber());
    const auto cookie = xcb_get_selection_owner(X11::qtConnection(), X11::atom(name.constData()));
    const X11::Reply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(X11::qtConnection(), cookie, nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

/// What of a window decides whether it is drawn past the compositing manager.
struct PendingWindow {
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
};

bool coversOpaquely(const PendingWindow& window, QRect screen)
{
    xcb_connection_t* connection = X11::qtConnection();
    // Both are fetched in any case: an answer that nobody fetches stays in memory.
    const X11::Reply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(connection, window.attributes, nullptr));
    const X11::Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, window.geometry, nullptr));
    return attributes && geometry && attributes->override_redirect &&
           attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
           attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT &&
           geometry->depth == X11::qtScreen().root_depth &&
           QRect(geometry->x, geometry->y, geometry->width, geometry->height).contains(screen);
}

/// Whether a window that bypasses the window manager, as some games' do, hides all of the screen
/// (native pixels). Compositing managers may let it draw straight to the screen; a translucent
/// window above it is then not seen, but an opaque one of its size is.
bool isCoveredByBypass(QRect screen)
{
    xcb_connection_t* connection = X11::qtConnection();
    const X11::Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(
        connection, xcb_query_tree(connection, X11::qtScreen().root), nullptr));
    if (!tree)
        return false;
    std::vector<PendingWindow> windows;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        windows.push_back({xcb_get_window_attributes(connection, children[i]),
                           xcb_get_geometry(connection, children[i])});
    }
    bool covered = false;
    for (const PendingWindow& window : windows)
        covered = coversOpaquely(window, screen) || covered;
    return covered;
}

} // namespace

std::optional<QPixmap> Platform::frozenBackdrop(const Screen& screen)
{
    if (!X11::qtConnection() || !screen.handle)
        return std::nullopt;
    if (composited() && !isCoveredByBypass(NativeScreen::pixels(*screen.handle)))
        return std::nullopt;
    QPixmap picture = screen.handle->grabWindow(0);
    if (picture.isNull())
        return std::nullopt;
    return picture;
}
