#include "Platform/Backdrop.h"

#include "Platform/Compositing.h"
#include "Platform/Linux/NativeScreen.h"
#include "Platform/Linux/X11/Connection.h"
#include "Platform/Linux/X11/QtConnection.h"
#include "Platform/Linux/X11/RootImage.h"

#include <QImage>

#include <vector>

namespace {

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
    const int count = xcb_query_tree_children_length(tree.get());
    windows.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        windows.push_back({xcb_get_window_attributes(connection, children[i]),
                           xcb_get_geometry(connection, children[i])});
    }
    bool covered = false;
    for (const PendingWindow& window : windows)
        covered = coversOpaquely(window, screen) || covered;
    return covered;
}

/// A picture of a part of the root window, and the connection that it must not outlive.
struct Grab {
    X11::Connection connection;
    X11::RootImage image;
};

/// The picture in the memory that the server wrote it to. A large screen's pixels take longer to
/// copy than to grab, and far longer through the socket, which is how QScreen::grabWindow gets
/// them.
QImage throughMemory(const ScreenTable::PixelRect& area)
{
    Result<X11::Connection> connection = X11::Connection::open();
    if (!connection)
        return {};
    Result<X11::RootImage> image = X11::RootImage::grab(*connection, area);
    if (!image || !image->format().isNative() ||
        image->width() != static_cast<std::uint32_t>(area.width) ||
        image->height() != static_cast<std::uint32_t>(area.height))
        return {};
    auto* const grab = new Grab{std::move(*connection), std::move(*image)}; // the QImage owns it
    return QImage(
        grab->image.row(0), area.width, area.height,
        static_cast<qsizetype>(grab->image.format().stride(grab->image.width())),
        QImage::Format_RGB32, [](void* owned) { delete static_cast<Grab*>(owned); }, grab);
}

} // namespace

std::optional<QPixmap> Platform::frozenBackdrop(const Screen& screen)
{
    if (!X11::qtConnection() || !screen.handle)
        return std::nullopt;
    const QRect pixels = NativeScreen::pixels(*screen.handle);
    if (isComposited() && !isCoveredByBypass(pixels))
        return std::nullopt;
    QPixmap picture =
        QPixmap::fromImage(throughMemory({pixels.x(), pixels.y(), pixels.width(), pixels.height()}),
                           Qt::NoFormatConversion);
    if (picture.isNull()) {
        picture = screen.handle->grabWindow(0);
        picture.setDevicePixelRatio(1);
    }
    if (picture.isNull())
        return std::nullopt;
    return picture;
}
