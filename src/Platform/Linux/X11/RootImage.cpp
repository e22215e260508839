#include "Platform/Linux/X11/RootImage.h"

#include "Platform/Linux/X11/Handles.h"

#include <algorithm>
#include <cstring>

#include <xcb/shm.h>
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

/// What of `wanted` lies on the root window, as large as that was when the connection was made.
Result<PixelRect> onRoot(const xcb_screen_t& screen, const PixelRect& wanted)
{
    const std::int64_t left = std::max<std::int64_t>(wanted.x, 0);
    const std::int64_t top = std::max<std::int64_t>(wanted.y, 0);
    const std::int64_t right =
        std::min<std::int64_t>(std::int64_t{wanted.x} + wanted.width, screen.width_in_pixels);
    const std::int64_t bottom =
        std::min<std::int64_t>(std::int64_t{wanted.y} + wanted.height, screen.height_in_pixels);
    if (left >= right || top >= bottom)
        return Failure{"the rectangle lies off the desktop"};
    return PixelRect{static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
                     static_cast<std::int32_t>(right - left),
                     static_cast<std::int32_t>(bottom - top)};
}

/// A rectangle in the 16-bit numbers of the protocol. It lies on the root window, so they suffice.
struct Area {
    explicit Area(const PixelRect& r)
        : x(static_cast<std::int16_t>(r.x))
        , y(static_cast<std::int16_t>(r.y))
        , width(static_cast<std::uint16_t>(r.width))
        , height(static_cast<std::uint16_t>(r.height))
    {
    }

    std::int16_t x;
    std::int16_t y;
    std::uint16_t width;
    std::uint16_t height;
};

/// Absent when the server will not have it this way.
std::optional<SharedSegment> throughMemory(const Connection& connection, const PixelRect& area,
                                           std::size_t bytes)
{
    std::optional<SharedSegment> segment = SharedSegment::create(connection, bytes);
    if (!segment)
        return std::nullopt;
    const Area a(area);
    xcb_connection_t* const xcb = connection.get();
    const Reply<xcb_shm_get_image_reply_t> image(xcb_shm_get_image_reply(
        xcb,
        xcb_shm_get_image(xcb, connection.screen().root, a.x, a.y, a.width, a.height, allPlanes,
                          XCB_IMAGE_FORMAT_Z_PIXMAP, segment->id(), 0),
        nullptr));
    if (!image || image->size < bytes)
        return std::nullopt;
    return segment;
}

Result<std::vector<std::uint8_t>> throughSocket(const Connection& connection, const PixelRect& area,
                                                std::size_t stride)
{
    xcb_connection_t* const xcb = connection.get();
    const auto rows = static_cast<std::size_t>(area.height);
    const std::size_t bandRows = std::clamp<std::size_t>(largestBand / stride, 1, rows);
    std::vector<std::uint8_t> pixels(stride * rows);
    for (std::size_t first = 0; first < rows; first += bandRows) {
        PixelRect band = area;
        band.y += static_cast<std::int32_t>(first);
        band.height = static_cast<std::int32_t>(std::min(bandRows, rows - first));
        const Area a(band);
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

} // namespace

RootImage::RootImage(const PixelRect& area, const PixelFormat& format, Storage storage)
    : m_width(static_cast<std::uint32_t>(area.width))
    , m_height(static_cast<std::uint32_t>(area.height))
    , m_format(format)
    , m_stride(format.stride(m_width))
    , m_storage(std::move(storage))
    , m_pixels(std::visit([](const auto& memory) { return memory.data(); }, m_storage))
{
}

Result<RootImage> RootImage::grab(const Connection& connection, const PixelRect& wanted)
{
    const Result<PixelFormat> format = rootFormat(connection);
    if (!format)
        return format.failure();
    const Result<PixelRect> area = onRoot(connection.screen(), wanted);
    if (!area)
        return area.failure();

    const std::size_t stride = format->stride(static_cast<std::size_t>(area->width));
    const std::size_t bytes = stride * static_cast<std::size_t>(area->height);
    if (auto segment = throughMemory(connection, *area, bytes))
        return RootImage(*area, *format, std::move(*segment));

    Result<std::vector<std::uint8_t>> pixels = throughSocket(connection, *area, stride);
    if (!pixels)
        return pixels.failure();
    return RootImage(*area, *format, std::move(*pixels));
}

} // namespace X11
