#include "desktop/harness/PatternedBackground.h"

#include "desktop/harness/Screen.h"
#include "desktop/harness/Server.h"
#include "desktop/harness/VirtualDesktop.h"

#include <xcb/xcb.h>

#include <algorithm>

namespace Desktop {
namespace {

// Seven low bits of x and y in red and green, never dark; four high bits of both in blue.
constexpr int lowBits = 7;
constexpr int lowMask = (1 << lowBits) - 1;

QPoint decoded(QRgb color)
{
    return {(qRed(color) & lowMask) | (qBlue(color) >> 4) << lowBits,
            (qGreen(color) & lowMask) | (qBlue(color) & 15) << lowBits};
}

} // namespace

QRgb PatternedBackground::colorAt(QPoint pixel)
{
    return qRgb(128 | (pixel.x() & lowMask), 128 | (pixel.y() & lowMask),
                (pixel.x() >> lowBits) << 4 | pixel.y() >> lowBits);
}

Outcome<void> PatternedBackground::paint(const VirtualDesktop& desktop)
{
    const auto bounds = Screen(desktop).bounds();
    if (!bounds)
        return bounds.failure();
    if (bounds->width() > 2048 || bounds->height() > 2048)
        return Failure{QStringLiteral("the desktop is too large for the pattern")};
    QImage image(bounds->size(), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto* const row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            row[x] = colorAt({x, y});
    }

    const Server& server = desktop.server();
    xcb_connection_t* const connection = server.connection();
    const auto width = static_cast<std::uint16_t>(image.width());
    const std::uint32_t pixmap = xcb_generate_id(connection);
    const std::uint32_t context = xcb_generate_id(connection);
    constexpr std::uint8_t depth = 24;
    xcb_create_pixmap(connection, depth, pixmap, server.root(), width,
                      static_cast<std::uint16_t>(image.height()));
    xcb_create_gc(connection, context, pixmap, 0, nullptr);
    constexpr int rowsAtOnce = 24; // stays below what a server takes in one request
    for (int y = 0; y < image.height(); y += rowsAtOnce) {
        const int rows = std::min(rowsAtOnce, image.height() - y);
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width,
                      static_cast<std::uint16_t>(rows), 0, static_cast<std::int16_t>(y), 0, depth,
                      static_cast<std::uint32_t>(rows * image.bytesPerLine()),
                      image.constScanLine(y));
    }
    xcb_free_gc(connection, context);
    xcb_change_window_attributes(connection, server.root(), XCB_CW_BACK_PIXMAP, &pixmap);
    // Compositors take the background from here. The pixmap lives as long as the connection.
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, server.root(),
                        server.atom("_XROOTPMAP_ID"), XCB_ATOM_PIXMAP, 32, 1, &pixmap);
    xcb_clear_area(connection, 1, server.root(), 0, 0, 0, 0);
    return Screen(desktop).awaitColor({0, 0}, QColor(colorAt({0, 0})));
}

Outcome<QRect> PatternedBackground::placeOf(const QImage& picture)
{
    if (picture.isNull())
        return Failure{QStringLiteral("there is no picture")};
    const QImage image = picture.convertToFormat(QImage::Format_RGB32);
    const QPoint origin = decoded(image.pixel(0, 0));
    for (int y = 0; y < image.height(); ++y) {
        const auto* const row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (row[x] != colorAt(origin + QPoint(x, y)))
                return Failure{QStringLiteral("of a picture from %1,%2 the pixel %3,%4 is #%5")
                                   .arg(origin.x())
                                   .arg(origin.y())
                                   .arg(x)
                                   .arg(y)
                                   .arg(row[x], 0, 16)};
        }
    }
    return QRect(origin, image.size());
}

} // namespace Desktop
