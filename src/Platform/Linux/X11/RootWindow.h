#pragma once

#include "Platform/Linux/X11/Connection.h"
#include "Platform/Linux/X11/PixelFormat.h"
#include "Support/ScreenTable.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace X11 {

/// In pixels.
struct RootSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// The root window's size when the connection was made.
RootSize sizeOf(const xcb_screen_t& screen);

/// What of `wanted` lies on a root window of that size; fails when nothing does.
Result<ScreenTable::PixelRect> onRoot(const ScreenTable::PixelRect& wanted, RootSize root);

/// How the root window keeps its pixels; fails when its visual is not TrueColor.
Result<PixelFormat> rootFormat(const Connection& connection);

/// Reads a part of the root window without shared memory, in bands of a moment each. `stride` is
/// the format's for the area's width.
Result<std::vector<std::uint8_t>> readThroughSocket(const Connection& connection,
                                                    const ScreenTable::PixelRect& area,
                                                    std::size_t stride);

/// A rectangle on the root window in the 16-bit numbers of the protocol.
struct ProtocolRect {
    explicit ProtocolRect(const ScreenTable::PixelRect& r);

    std::int16_t x;
    std::int16_t y;
    std::uint16_t width;
    std::uint16_t height;
};

} // namespace X11
