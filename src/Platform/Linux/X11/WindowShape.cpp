#include "Platform/Compositing.h"
#include "Platform/Linux/X11/QtConnection.h"
#include "Platform/WindowTraits.h"

#include <QPainterPath>
#include <QRegion>
#include <QWidget>

#include <array>
#include <cmath>
#include <vector>

#include <xcb/shape.h>

namespace {

/// A rectangle with round corners. All in native pixels.
QRegion rounded(QRect rect, double radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return {path.toFillPolygon().toPolygon()};
}

void setShape(xcb_window_t window, xcb_shape_sk_t kind, const QRegion& region)
{
    std::vector<xcb_rectangle_t> rectangles;
    rectangles.reserve(static_cast<std::size_t>(region.rectCount()));
    for (const QRect& part : region) {
        rectangles.push_back(
            {static_cast<std::int16_t>(part.x()), static_cast<std::int16_t>(part.y()),
             static_cast<std::uint16_t>(part.width()), static_cast<std::uint16_t>(part.height())});
    }
    xcb_shape_rectangles(X11::qtConnection(), XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_UNSORTED,
                         window, 0, 0, static_cast<std::uint32_t>(rectangles.size()),
                         rectangles.data());
}

} // namespace

void Platform::setBody(QWidget& window, const QRectF& body, double cornerRadius)
{
    xcb_connection_t* connection = X11::qtConnection();
    if (!connection || !window.windowHandle())
        return;
    const auto id = static_cast<xcb_window_t>(window.winId());
    const double scale = window.devicePixelRatioF();
    const auto native = [scale](double points) {
        return static_cast<int>(std::lround(points * scale));
    };
    const QRect pixels(native(body.x()), native(body.y()), native(body.width()),
                       native(body.height()));
    setShape(id, XCB_SHAPE_SK_INPUT, pixels);
    if (isComposited())
        xcb_shape_mask(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, id, 0, 0, XCB_NONE);
    else
        setShape(id, XCB_SHAPE_SK_BOUNDING, rounded(pixels, cornerRadius * scale));
    // What GTK's windows say of the shadow that they paint themselves. Compositors that know it
    // draw none of their own around it. Left, right, top, bottom.
    const std::array<std::uint32_t, 4> extents = {
        static_cast<std::uint32_t>(pixels.left()),
        static_cast<std::uint32_t>(native(window.width()) - pixels.x() - pixels.width()),
        static_cast<std::uint32_t>(pixels.top()),
        static_cast<std::uint32_t>(native(window.height()) - pixels.y() - pixels.height())};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id, X11::atom("_GTK_FRAME_EXTENTS"),
                        XCB_ATOM_CARDINAL, 32, extents.size(), extents.data());
    xcb_flush(connection);
}
