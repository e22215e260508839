#include "Platform/Linux/X11/RootReader.h"

#include "Platform/Linux/X11/Handles.h"

#include <xcb/shm.h>
#include <xcb/xcb.h>

using ScreenTable::PixelRect;

namespace X11 {

namespace {

constexpr std::uint32_t allPlanes = ~std::uint32_t{0};

/// From the red, green and blue bytes that a reader makes.
void numbersFromRgb(const std::vector<std::uint8_t>& rgb, std::uint32_t* numbers)
{
    for (std::size_t i = 0; 3 * i < rgb.size(); ++i)
        numbers[i] =
            std::uint32_t{rgb[3 * i]} << 16 | std::uint32_t{rgb[3 * i + 1]} << 8 | rgb[3 * i + 2];
}

} // namespace

RootReader::RootReader(const Connection& connection, const PixelRect& area,
                       const PixelFormat& format)
    : m_connection(&connection)
    , m_area(area)
    , m_format(format)
    , m_reader(format)
{
}

Result<RootReader> RootReader::create(const Connection& connection, const PixelRect& area)
{
    const Result<PixelFormat> format = rootFormat(connection);
    if (!format)
        return format.failure();
    RootReader reader(connection, area, *format);
    // Rows of the parts may be padded; there are no more rows than the area has pixels.
    const std::size_t bytes = format->stride(static_cast<std::size_t>(area.width)) *
                              static_cast<std::size_t>(area.height);
    if (format->isNative())
        reader.m_segment = SharedSegment::create(connection, bytes);
    return reader;
}

PossibleFailure RootReader::read(const std::vector<PixelRect>& parts, const Taker& take)
{
    if (m_segment)
        return readShared(parts, take);
    for (const PixelRect& part : parts) {
        if (PossibleFailure failure = readOne(part, take))
            return failure;
    }
    return std::nullopt;
}

PixelRect RootReader::onScreen(const PixelRect& part) const
{
    return {m_area.x + part.x, m_area.y + part.y, part.width, part.height};
}

/// A plain format has no padding, so that disjoint parts fit into memory for the whole.
PossibleFailure RootReader::readShared(const std::vector<PixelRect>& parts, const Taker& take)
{
    xcb_connection_t* const xcb = m_connection->get();
    std::vector<xcb_shm_get_image_cookie_t> requests;
    std::vector<std::size_t> offsets;
    std::size_t end = 0;
    for (const PixelRect& part : parts) {
        const ProtocolRect a(onScreen(part));
        requests.push_back(xcb_shm_get_image(xcb, m_connection->screen().root, a.x, a.y, a.width,
                                             a.height, allPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP,
                                             m_segment->id(), static_cast<std::uint32_t>(end)));
        offsets.push_back(end);
        end += m_format.stride(static_cast<std::size_t>(part.width)) *
               static_cast<std::size_t>(part.height);
    }
    std::vector<PixelRect> refused;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Reply<xcb_shm_get_image_reply_t> reply(
            xcb_shm_get_image_reply(xcb, requests[i], nullptr));
        if (reply)
            hand(parts[i], m_segment->data() + offsets[i], take);
        else
            refused.push_back(parts[i]);
    }
    for (const PixelRect& part : refused) {
        if (PossibleFailure failure = readOne(part, take))
            return failure;
    }
    return std::nullopt;
}

PossibleFailure RootReader::readOne(const PixelRect& part, const Taker& take)
{
    const PixelRect wanted = onScreen(part);
    PossibleFailure refusal;
    // Screens that change do so in steps: the root may shrink between the two questions.
    for (int attempt = 0; attempt < 2; ++attempt) {
        const Result<RootSize> root = currentSize();
        if (!root)
            return root.failure();
        const Result<PixelRect> there = onRoot(wanted, *root);
        if (!there || *there != wanted) {
            // What is gone is black, then comes what is left.
            const std::vector<std::uint32_t> black(static_cast<std::size_t>(part.width) *
                                                   static_cast<std::size_t>(part.height));
            take(part, black.data(), static_cast<std::size_t>(part.width));
            if (!there)
                return std::nullopt;
        }
        const Result<std::vector<std::uint8_t>> bytes = readThroughSocket(
            *m_connection, *there, m_format.stride(static_cast<std::size_t>(there->width)));
        if (bytes) {
            hand({there->x - m_area.x, there->y - m_area.y, there->width, there->height},
                 bytes->data(), take);
            return std::nullopt;
        }
        refusal = bytes.failure();
    }
    return refusal;
}

void RootReader::hand(const PixelRect& part, const std::uint8_t* bytes, const Taker& take)
{
    const auto width = static_cast<std::size_t>(part.width);
    if (m_format.isNative()) {
        // Images start at a multiple of their pad, which is four bytes here.
        const void* const start = bytes;
        take(part, static_cast<const std::uint32_t*>(start), width);
        return;
    }
    const std::size_t stride = m_format.stride(width);
    m_numbers.resize(width * static_cast<std::size_t>(part.height));
    std::vector<std::uint8_t> rgb(3 * width);
    for (std::size_t row = 0; row < static_cast<std::size_t>(part.height); ++row) {
        m_reader.read(bytes + stride * row, width, rgb.data());
        numbersFromRgb(rgb, m_numbers.data() + width * row);
    }
    take(part, m_numbers.data(), width);
}

Result<RootSize> RootReader::currentSize() const
{
    xcb_connection_t* const xcb = m_connection->get();
    const Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(xcb, xcb_get_geometry(xcb, m_connection->screen().root), nullptr));
    if (!geometry)
        return m_connection->lostOr("the X server refused to give its size");
    return RootSize{geometry->width, geometry->height};
}

} // namespace X11
