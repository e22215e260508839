#pragma once

#include "Platform/Linux/X11/RootWindow.h"
#include "Platform/Linux/X11/SharedSegment.h"

#include <functional>
#include <optional>
#include <vector>

namespace X11 {

/// Reads parts of the root window again and again, with what that takes made once. Must not outlive
/// the connection.
class RootReader {
public:
    /// `area` lies on the root window; fails as RootImage::grab does.
    static Result<RootReader> create(const Connection& connection,
                                     const ScreenTable::PixelRect& area);

    /// Gets a part's pixels as numbers 0xRRGGBB (whatever in the upper eight bits), `stride` of
    /// them from row to row, valid during the call.
    using Taker = std::function<void(const ScreenTable::PixelRect& part,
                                     const std::uint32_t* pixels, std::size_t stride)>;

    /// Reads parts of the area, given in pixels from its top left corner, disjoint ones. With
    /// shared memory all of them are under way before any is waited for. What no longer lies on the
    /// root window, since that has shrunk, is black.
    PossibleFailure read(const std::vector<ScreenTable::PixelRect>& parts, const Taker& take);

private:
    RootReader(const Connection& connection, const ScreenTable::PixelRect& area,
               const PixelFormat& format);

    PossibleFailure readShared(const std::vector<ScreenTable::PixelRect>& parts, const Taker& take);
    PossibleFailure readOne(const ScreenTable::PixelRect& part, const Taker& take);
    void hand(const ScreenTable::PixelRect& part, const std::uint8_t* bytes, const Taker& take);
    ScreenTable::PixelRect onScreen(const ScreenTable::PixelRect& part) const;
    Result<RootSize> currentSize() const;

    const Connection* m_connection;
    ScreenTable::PixelRect m_area;
    PixelFormat m_format;
    RgbReader m_reader;
    std::optional<SharedSegment> m_segment; // holds the whole area
    std::vector<std::uint32_t> m_numbers;   // of a format that does not have them by itself
};

} // namespace X11
