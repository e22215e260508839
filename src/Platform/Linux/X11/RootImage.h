#pragma once

#include "Platform/Linux/X11/Connection.h"
#include "Platform/Linux/X11/PixelFormat.h"
#include "Platform/Linux/X11/SharedSegment.h"
#include "Support/ScreenTable.h"

#include <cstdint>
#include <variant>
#include <vector>

namespace X11 {

/// A part of the root window with all that is shown on it, as the server keeps its pixels; no mouse
/// pointer. Must not outlive the connection it came through.
class RootImage {
public:
    /// Grabs what of `wanted` lies on the root window. Fails when none of it does, when the root
    /// window's visual is not TrueColor, and when the server is gone.
    ///
    /// Through shared memory the picture is of one moment. Without it a large one comes in bands,
    /// each of its own moment.
    static Result<RootImage> grab(const Connection& connection,
                                  const ScreenTable::PixelRect& wanted);

    std::uint32_t width() const { return m_width; }
    std::uint32_t height() const { return m_height; }
    const PixelFormat& format() const { return m_format; }

    /// The row `y` from the top, format().stride(width()) bytes of it.
    const std::uint8_t* row(std::uint32_t y) const { return m_pixels + m_stride * y; }

private:
    using Storage = std::variant<SharedSegment, std::vector<std::uint8_t>>;

    RootImage(const ScreenTable::PixelRect& area, const PixelFormat& format, Storage storage);

    std::uint32_t m_width;
    std::uint32_t m_height;
    PixelFormat m_format;
    std::size_t m_stride; // bytes
    Storage m_storage;
    const std::uint8_t* m_pixels; // into the storage, whose memory stays put when it is moved
};

} // namespace X11
