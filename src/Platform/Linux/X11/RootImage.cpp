#include "Platform/Linux/X11/RootImage.h"

#include "Platform/Linux/X11/Handles.h"
#include "Platform/Linux/X11/RootWindow.h"

#include <xcb/shm.h>
#include <xcb/xcb.h>

using ScreenTable::PixelRect;

namespace X11 {

namespace {

constexpr std::uint32_t allPlanes = ~std::uint32_t{0};

/// Absent when the server will not have it this way.
std::optional<SharedSegment> throughMemory(const Connection& connection, const PixelRect& area,
                                           std::size_t bytes)
{
    std::optional<SharedSegment> segment = SharedSegment::create(connection, bytes);
    if (!segment)
        return std::nullopt;
    const ProtocolRect a(area);
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
    const Result<PixelRect> area = onRoot(wanted, sizeOf(connection.screen()));
    if (!area)
        return area.failure();

    const std::size_t stride = format->stride(static_cast<std::size_t>(area->width));
    const std::size_t bytes = stride * static_cast<std::size_t>(area->height);
    if (auto segment = throughMemory(connection, *area, bytes))
        return RootImage(*area, *format, std::move(*segment));

    Result<std::vector<std::uint8_t>> pixels = readThroughSocket(connection, *area, stride);
    if (!pixels)
        return pixels.failure();
    return RootImage(*area, *format, std::move(*pixels));
}

} // namespace X11
