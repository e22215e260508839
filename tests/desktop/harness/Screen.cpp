#include "desktop/harness/Screen.h"

#include "desktop/harness/Server.h"
#include "desktop/harness/VirtualDesktop.h"

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <cstdlib>

namespace Desktop {

Outcome<QRect> Screen::bounds() const
{
    const Server& server = m_desktop.server();
    const auto cookie = xcb_get_geometry(server.connection(), server.root());
    const Reply<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(server.connection(), cookie, nullptr));
    if (!reply)
        return Failure{QStringLiteral("the X server did not tell its size")};
    return QRect(0, 0, reply->width, reply->height);
}

Outcome<QImage> Screen::grab(QRect area) const
{
    const auto all = bounds();
    if (!all)
        return all.failure();
    if (area.isEmpty())
        area = *all;
    if (!all->contains(area))
        return Failure{QStringLiteral("the area to grab reaches beyond the desktop")};

    const Server& server = m_desktop.server();
    constexpr std::uint32_t allPlanes = 0xffffffff;
    const auto cookie =
        xcb_get_image(server.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, server.root(),
                      static_cast<std::int16_t>(area.x()), static_cast<std::int16_t>(area.y()),
                      static_cast<std::uint16_t>(area.width()),
                      static_cast<std::uint16_t>(area.height()), allPlanes);
    const Reply<xcb_get_image_reply_t> reply(
        xcb_get_image_reply(server.connection(), cookie, nullptr));
    if (!reply)
        return Failure{QStringLiteral("the X server gave no picture of the desktop")};
    // 24 bits of colour in 32, as the desktop script asks the server for, in rows without padding.
    const std::uint8_t* data = xcb_get_image_data(reply.get());
    const QImage borrowed(data, area.width(), area.height(), area.width() * 4,
                          QImage::Format_RGB32);
    if (xcb_get_image_data_length(reply.get()) != area.width() * area.height() * 4)
        return Failure{QStringLiteral("the X server's picture is not of 32 bits a pixel")};
    return borrowed.copy();
}

Outcome<QColor> Screen::pixel(QPoint point) const
{
    const auto image = grab(QRect(point, QSize(1, 1)));
    if (!image)
        return image.failure();
    return image->pixelColor(0, 0);
}

Outcome<void> Screen::awaitColor(QPoint point, QColor color, int tolerance,
                                 std::chrono::milliseconds deadline) const
{
    const auto attempt = [&]() -> Outcome<void> {
        const auto seen = pixel(point);
        if (!seen)
            return seen.failure();
        if (!isNearly(*seen, color, tolerance))
            return Failure{QStringLiteral("it is ") + seen->name()};
        return {};
    };
    return waitFor(QStringLiteral("%1 at %2,%3").arg(color.name()).arg(point.x()).arg(point.y()),
                   attempt, deadline);
}

Outcome<QByteArray> Screen::pointerShape() const
{
    xcb_connection_t* connection = m_desktop.server().connection();
    // The extension answers nobody who has not said which version they speak.
    const auto versionCookie =
        xcb_xfixes_query_version(connection, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION);
    const auto cookie = xcb_xfixes_get_cursor_image_and_name(connection);
    const Reply<xcb_xfixes_query_version_reply_t> version(
        xcb_xfixes_query_version_reply(connection, versionCookie, nullptr));
    const Reply<xcb_xfixes_get_cursor_image_and_name_reply_t> reply(
        xcb_xfixes_get_cursor_image_and_name_reply(connection, cookie, nullptr));
    if (!version || !reply)
        return Failure{QStringLiteral("the X server did not tell the pointer's shape")};
    return QByteArray(xcb_xfixes_get_cursor_image_and_name_name(reply.get()), reply->nbytes);
}

bool isNearly(QColor a, QColor b, int tolerance)
{
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

int differingPixels(const QImage& a, const QImage& b, int tolerance)
{
    if (a.size() != b.size())
        return std::max(a.width() * a.height(), b.width() * b.height());
    int count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            count += isNearly(a.pixelColor(x, y), b.pixelColor(x, y), tolerance) ? 0 : 1;
    return count;
}

Outcome<void> savePng(const QImage& image, const QString& path)
{
    if (!image.save(path, "PNG"))
        return Failure{QStringLiteral("could not write ") + path};
    return {};
}

} // namespace Desktop
