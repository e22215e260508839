#pragma once

#include <QImage>

#include <array>
#include <cstdint>
#include <memory>

extern "C" {
#include <libavutil/pixfmt.h>
}

struct SwsContext;

/// A camera's picture, which belongs to somebody else.
struct CameraFrame {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    QSize size;
    bool isFullRange = false; ///< Of colours as brightness and difference: the whole byte.
    bool isBt709 = false;     ///< Of the same: by that standard, or else by BT.601.
    std::array<const std::uint8_t*, 4> planes{};
    std::array<int, 4> strides{}; ///< Bytes from line to line.
};

/// Makes small square pictures of a camera's large ones.
class FrameScaler {
public:
    FrameScaler();
    ~FrameScaler();
    FrameScaler(const FrameScaler&) = delete;
    FrameScaler& operator=(const FrameScaler&) = delete;

    /// The middle of `frame`, as high or wide as fits, `side` pixels high and wide, opaque. Null
    /// when that cannot be made.
    QImage square(const CameraFrame& frame, int side);

private:
    struct Free {
        void operator()(SwsContext* context) const;
    };
    std::unique_ptr<SwsContext, Free> m_context; // for frames like the last one
};
