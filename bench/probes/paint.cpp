// Makes a picture of a kind of content the background of the whole screen.
//
// usage: bench_paint mixed|terminal|photograph

#include "probes/Connection.h"
#include "probes/Contents.h"

#include <QGuiApplication>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

QImage painted(const std::string& kind, QSize size)
{
    if (kind == "mixed")
        return Bench::Contents::mixed(size);
    if (kind == "terminal")
        return Bench::Contents::terminal(size);
    if (kind == "photograph")
        return Bench::Contents::photograph(size);
    throw std::runtime_error("usage: bench_paint mixed|terminal|photograph");
}

void put(const Bench::Connection& connection, const QImage& image)
{
    if (connection.screen().root_depth != 24)
        throw std::runtime_error("the screen is not 24 bits deep");
    const xcb_pixmap_t pixmap = xcb_generate_id(connection);
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_pixmap(connection, connection.screen().root_depth, pixmap, connection.root(),
                      connection.screen().width_in_pixels, connection.screen().height_in_pixels);
    xcb_create_gc(connection, context, pixmap, 0, nullptr);
    const int stride = static_cast<int>(image.bytesPerLine());
    const int rowsAtOnce = std::max(1, 200000 / stride); // within the protocol's largest request
    for (int y = 0; y < image.height(); y += rowsAtOnce) {
        const int rows = std::min(rowsAtOnce, image.height() - y);
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context,
                      static_cast<std::uint16_t>(image.width()), static_cast<std::uint16_t>(rows),
                      0, static_cast<std::int16_t>(y), 0, connection.screen().root_depth,
                      static_cast<std::uint32_t>(stride * rows), image.constScanLine(y));
    }
    xcb_change_window_attributes(connection, connection.root(), XCB_CW_BACK_PIXMAP, &pixmap);
    xcb_clear_area(connection, 0, connection.root(), 0, 0, 0, 0);
    // Where compositors look for the background; it stays when we are gone.
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, connection.root(),
                        connection.atom("_XROOTPMAP_ID"), XCB_ATOM_PIXMAP, 32, 1, &pixmap);
    xcb_set_close_down_mode(connection, XCB_CLOSE_DOWN_RETAIN_PERMANENT);
    connection.finish();
}

} // namespace

int main(int argc, char** argv)
try {
    // Only for its fonts: nothing of Qt's is shown.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    const Bench::Connection connection;
    const QSize size(connection.screen().width_in_pixels, connection.screen().height_in_pixels);
    put(connection, painted(argc > 1 ? argv[1] : "", size));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "bench_paint: %s\n", error.what());
    return 1;
}
