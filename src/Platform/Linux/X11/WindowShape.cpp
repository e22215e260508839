#include "Platform/Compositing.h"
#include "Platform/Linux/X11/QtConnection.h"
#include "Platform/WindowTraits.h"

#include <QRegion>
#include <QWidget>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <xcb/shape.h>

namespace {

/// The pixels whose middles are in a rectangle with round corners, a line at a time. All in native
/// pixels.
QRegion rounded(QRect rect, double radius)
{
    QRegion region;
    for (int line = 0; line < rect.height(); ++line) {
        const double middle = line + 0.5;
        const double beyond = radius - std::min(middle, rect.height() - middle);
        const double inset =
            beyond > 0 ? radius - std::sqrt(std::max(radius * radius - beyond * beyond, 0.0)) : 0;
        const int left = static_cast<int>(std::ceil(inset - 0.5));
        region += QRect(rect.left() + left, rect.top() + line, rect.width() - 2 * left, 1);
    }
    return region;
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
    const QRegion region = rounded(pixels, cornerRadius * scale);
    setShape(id, XCB_SHAPE_SK_INPUT, region);
    if (isComposited())
        xcb_shape_mask(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, id, 0, 0, XCB_NONE);
    else
        setShape(id, XCB_SHAPE_SK_BOUNDING, region);
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
