#include "Platform/Linux/X11/RootWindow.h"

#include "Platform/Linux/X11/Handles.h"

#include <algorithm>
#include <cstring>

#include <xcb/xcb.h>

using ScreenTable::PixelRect;

namespace X11 {

namespace {

/// A reply through the socket stays below this, in bytes, unless a single row is longer.
constexpr std::size_t largestBand = 16 << 20;
constexpr std::uint32_t allPlanes = ~std::uint32_t{0};

const xcb_visualtype_t* visualOf(const xcb_screen_t& screen)
{
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem;
         xcb_depth_next(&depth)) {
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem;
             xcb_visualtype_next(&visual)) {
            if (visual.data->visual_id == screen.root_visual)
                return visual.data;
        }
    }
    return nullptr;
}

} // namespace

ProtocolRect::ProtocolRect(const PixelRect& r)
    : x(static_cast<std::int16_t>(r.x))
    , y(static_cast<std::int16_t>(r.y))
    , width(static_cast<std::uint16_t>(r.width))
    , height(static_cast<std::uint16_t>(r.height))
{
}

RootSize sizeOf(const xcb_screen_t& screen)
{
    return {screen.width_in_pixels, screen.height_in_pixels};
}

Result<PixelFormat> rootFormat(const Connection& connection)
{
    const xcb_screen_t& screen = connection.screen();
    const xcb_visualtype_t* const visual = visualOf(screen);
    if (!visual || visual->_class != XCB_VISUAL_CLASS_TRUE_COLOR)
        return Failure{"the screen does not show true colours (its visual is not TrueColor)"};

    const xcb_setup_t* const setup = xcb_get_setup(connection.get());
    PixelFormat format;
    format.redMask = visual->red_mask;
    format.greenMask = visual->green_mask;
    format.blueMask = visual->blue_mask;
    format.byteOrder = setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST
                           ? ByteOrder::LeastSignificantFirst
                           : ByteOrder::MostSignificantFirst;
    format.bitsPerPixel = 0;
    for (auto each = xcb_setup_pixmap_formats_iterator(setup); each.rem; xcb_format_next(&each)) {
        if (each.data->depth != screen.root_depth)
            continue;
        format.bitsPerPixel = each.data->bits_per_pixel;
        format.scanlinePad = each.data->scanline_pad;
    }
    if (!format.isSupported())
        return Failure{"the screen keeps its pixels in a form that is not supported"};
    return format;
}

Result<PixelRect> onRoot(const PixelRect& wanted, RootSize root)
{
    const std::int64_t left = std::max<std::int64_t>(wanted.x, 0);
    const std::int64_t top = std::max<std::int64_t>(wanted.y, 0);
    const std::int64_t right =
        std::min<std::int64_t>(std::int64_t{wanted.x} + wanted.width, root.width);
    const std::int64_t bottom =
        std::min<std::int64_t>(std::int64_t{wanted.y} + wanted.height, root.height);
    if (left >= right || top >= bottom)
        return Failure{"the rectangle lies off the desktop"};
    return PixelRect{static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
                     static_cast<std::int32_t>(right - left),
                     static_cast<std::int32_t>(bottom - top)};
}

Result<std::vector<std::uint8_t>> readThroughSocket(const Connection& connection,
                                                    const PixelRect& area, std::size_t stride)
{
    xcb_connection_t* const xcb = connection.get();
    const auto rows = static_cast<std::size_t>(area.height);
    const std::size_t bandRows = std::clamp<std::size_t>(largestBand / stride, 1, rows);
    std::vector<std::uint8_t> pixels(stride * rows);
    for (std::size_t first = 0; first < rows; first += bandRows) {
        PixelRect band = area;
        band.y += static_cast<std::int32_t>(first);
        band.height = static_cast<std::int32_t>(std::min(bandRows, rows - first));
        const ProtocolRect a(band);
        const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(
            xcb,
            xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, connection.screen().root, a.x, a.y,
                          a.width, a.height, allPlanes),
            nullptr));
        if (!image)
            return connection.lostOr("the X server refused to give the picture");
        const std::size_t bytes = stride * static_cast<std::size_t>(band.height);
        if (static_cast<std::size_t>(xcb_get_image_data_length(image.get())) < bytes)
            return Failure{"the X server gave too small a picture"};
        std::memcpy(pixels.data() + stride * first, xcb_get_image_data(image.get()), bytes);
    }
    return pixels;
}

} // namespace X11
