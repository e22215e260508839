#include "Media/FFmpeg/Export/PictureKind.h"

#include "Media/FFmpeg/FrameColours.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

struct Box {
    int x, y, width, height;
};

int evenNear(double length, int most)
{
    return std::clamp(static_cast<int>(std::lround(length / 2)) * 2, 2, most);
}

/// As large as fits into the kind, in the middle; its corner and sides are even, so that the planes
/// of colours, which have half the size, meet it.
Box boxOf(const AVFrame& frame, const PictureKind& kind)
{
    const double scale = std::min(kind.width / static_cast<double>(frame.width),
                                  kind.height / static_cast<double>(frame.height));
    const int width = evenNear(frame.width * scale, kind.width);
    const int height = evenNear(frame.height * scale, kind.height);
    return {(kind.width - width) / 4 * 2, (kind.height - height) / 4 * 2, width, height};
}

Result<Av::Frame> blackFrame(const PictureKind& kind)
{
    Av::Frame frame(av_frame_alloc());
    if (!frame)
        return Failure{"there is no memory left"};
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = kind.width;
    frame->height = kind.height;
    frame->color_range = kind.range;
    frame->colorspace = kind.space;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return Failure{"there is no memory left"};
    constexpr std::uint8_t noColour = 128;
    const std::uint8_t black = kind.range == AVCOL_RANGE_JPEG ? 0 : 16;
    for (int plane = 0; plane < 3; ++plane) {
        const int rows = plane == 0 ? kind.height : kind.height / 2;
        std::fill_n(frame->data[plane], std::ptrdiff_t{frame->linesize[plane]} * rows,
                    plane == 0 ? black : noColour);
    }
    return frame;
}

} // namespace

PictureKind PictureKind::of(const AVFrame& frame)
{
    PictureKind kind;
    kind.width = std::max(2, frame.width / 2 * 2);
    kind.height = std::max(2, frame.height / 2 * 2);
    kind.pixelShape = frame.sample_aspect_ratio;
    kind.range = FrameColours::isFullRange(frame) ? AVCOL_RANGE_JPEG : frame.color_range;
    // What is no difference of colours (RGB) becomes one.
    kind.space = frame.colorspace == AVCOL_SPC_RGB ? AVCOL_SPC_BT709 : frame.colorspace;
    kind.primaries = frame.color_primaries;
    kind.transfer = frame.color_trc;
    kind.chroma = frame.chroma_location;
    return kind;
}

Result<Av::Frame> PictureFitter::fit(Av::Frame frame)
{
    const bool isPlanar =
        frame->format == AV_PIX_FMT_YUV420P || frame->format == AV_PIX_FMT_YUVJ420P;
    const PictureKind kind = PictureKind::of(*frame);
    if (isPlanar && frame->width == m_kind.width && frame->height == m_kind.height &&
        kind.range == m_kind.range && kind.space == m_kind.space)
    {
        frame->format = AV_PIX_FMT_YUV420P; // the range is said by itself
        return frame;
    }
    return converted(*frame);
}

Result<Av::Frame> PictureFitter::converted(const AVFrame& frame)
{
    constexpr int flags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;
    Result<Av::Frame> fitted = blackFrame(m_kind);
    if (!fitted)
        return fitted;
    const Box box = boxOf(frame, m_kind);
    m_scaler.reset(sws_getCachedContext(
        m_scaler.release(), frame.width, frame.height, static_cast<AVPixelFormat>(frame.format),
        box.width, box.height, AV_PIX_FMT_YUV420P, flags, nullptr, nullptr, nullptr));
    const Failure unknown{"a frame of this kind cannot be joined"};
    if (!m_scaler)
        return unknown;
    constexpr int one = 1 << 16;
    sws_setColorspaceDetails(m_scaler.get(), sws_getCoefficients(FrameColours::matrixOf(frame)),
                             FrameColours::isFullRange(frame) ? 1 : 0,
                             sws_getCoefficients(FrameColours::matrixOf(**fitted)),
                             m_kind.range == AVCOL_RANGE_JPEG ? 1 : 0, 0, one, one);
    AVFrame& target = **fitted;
    std::array<std::uint8_t*, 4> planes = {};
    std::array<int, 4> strides = {};
    for (std::size_t plane = 0; plane < 3; ++plane) {
        const int part = plane == 0 ? 1 : 2;
        strides[plane] = target.linesize[plane];
        planes[plane] =
            target.data[plane] + std::ptrdiff_t{box.y / part} * strides[plane] + box.x / part;
    }
    if (sws_scale(m_scaler.get(), frame.data, frame.linesize, 0, frame.height, planes.data(),
                  strides.data()) <= 0)
        return unknown;
    return fitted;
}
