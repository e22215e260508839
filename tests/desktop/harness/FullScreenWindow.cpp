#include "desktop/harness/FullScreenWindow.h"

#include "desktop/harness/Screen.h"
#include "desktop/harness/Server.h"
#include "desktop/harness/VirtualDesktop.h"
#include "desktop/harness/WaitUntil.h"

#include <QtGui/QPainter>

#include <xcb/xcb.h>

#include <random>
#include <string_view>

namespace Desktop {
namespace {

constexpr std::uint16_t tileSide = 40;

/// Noise, repeated over the screen from its top left.
const QImage& tile()
{
    static const QImage image = [] {
        QImage noise(tileSide, tileSide, QImage::Format_RGB32);
        std::mt19937 random(1);
        for (int y = 0; y < tileSide; ++y)
            for (int x = 0; x < tileSide; ++x)
                noise.setPixel(x, y, 0xff000000 | static_cast<QRgb>(random() & 0xffffff));
        return noise;
    }();
    return image;
}

/// A pixmap on the server that holds the tile; the caller frees it.
xcb_pixmap_t tilePixmap(xcb_connection_t* connection, const xcb_screen_t& screen)
{
    const xcb_pixmap_t pixmap = xcb_generate_id(connection);
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_pixmap(connection, screen.root_depth, pixmap, screen.root, tileSide, tileSide);
    xcb_create_gc(connection, context, pixmap, 0, nullptr);
    xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, tileSide, tileSide, 0, 0,
                  0, screen.root_depth, static_cast<std::uint32_t>(tile().sizeInBytes()),
                  tile().constBits());
    xcb_free_gc(connection, context);
    return pixmap;
}

void setText(const Server& server, xcb_window_t window, const char* property,
             std::string_view value)
{
    xcb_change_property(server.connection(), XCB_PROP_MODE_REPLACE, window, server.atom(property),
                        server.atom("UTF8_STRING"), 8, static_cast<std::uint32_t>(value.size()),
                        value.data());
}

void askToBeFullScreen(const Server& server, xcb_window_t window)
{
    const std::uint32_t state = server.atom("_NET_WM_STATE_FULLSCREEN");
    xcb_change_property(server.connection(), XCB_PROP_MODE_REPLACE, window,
                        server.atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, 1, &state);
}

void blacken(QImage& image, QRect part)
{
    QPainter(&image).fillRect(part, Qt::black);
}

} // namespace

QImage FullScreenWindow::picture(QRect area)
{
    QImage image(area.size(), QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setBrushOrigin(-area.topLeft());
    painter.fillRect(image.rect(), QBrush(tile()));
    return image;
}

FullScreenWindow::FullScreenWindow(const VirtualDesktop& desktop, std::uint32_t id)
    : m_desktop(desktop)
    , m_id(id)
{
}

FullScreenWindow::~FullScreenWindow()
{
    xcb_connection_t* connection = m_desktop.server().connection();
    xcb_destroy_window(connection, m_id);
    xcb_flush(connection);
}

Outcome<std::unique_ptr<FullScreenWindow>> FullScreenWindow::show(const VirtualDesktop& desktop,
                                                                  Kind kind, QRect others)
{
    const Server& server = desktop.server();
    xcb_connection_t* connection = server.connection();
    const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const QSize size = desktop.options().size;

    const xcb_pixmap_t background = tilePixmap(connection, screen);
    const std::uint32_t values[] = {background, kind == Kind::Bypass ? 1U : 0U};
    const xcb_window_t id = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, id, screen.root, 0, 0,
                      static_cast<std::uint16_t>(size.width()),
                      static_cast<std::uint16_t>(size.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      screen.root_visual, XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_free_pixmap(connection, background);
    setText(server, id, "_NET_WM_NAME", "Full screen");
    if (kind == Kind::Managed)
        askToBeFullScreen(server, id);
    xcb_map_window(connection, id);
    xcb_flush(connection);
    std::unique_ptr<FullScreenWindow> window(new FullScreenWindow(desktop, id));

    QImage wanted = picture(QRect(QPoint(), size));
    blacken(wanted, others);
    const auto seen = waitUntil(QStringLiteral("the full-screen window"), [&] {
        auto now = Screen(desktop).grab(wanted.rect());
        if (!now)
            return false;
        blacken(*now, others);
        return *now == wanted;
    });
    if (!seen)
        return seen.failure();
    return window;
}

} // namespace Desktop
