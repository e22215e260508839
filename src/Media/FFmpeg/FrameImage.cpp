#include "Media/FFmpeg/FrameImage.h"

#include "Media/FFmpeg/FrameColours.h"
#include "Media/Fitting.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/pixdesc.h>
}

namespace {

/// With square pixels a frame may have more than it was decoded to. 8K has 33 million.
constexpr qint64 maximumPixels = qint64{1} << 25;

/// A pixel's width over its height. Beyond an eighth or eight no picture means it.
double pixelShape(const AVFrame& frame)
{
    constexpr double most = 8;
    const AVRational ratio = frame.sample_aspect_ratio;
    if (ratio.num <= 0 || ratio.den <= 0)
        return 1;
    const double shape = av_q2d(ratio);
    return shape > most || shape < 1 / most ? 1 : shape;
}

/// With square pixels, not yet upright.
QSize squareSize(const AVFrame& frame)
{
    return {std::max(1, static_cast<int>(std::lround(frame.width * pixelShape(frame)))),
            frame.height};
}

bool hasAlpha(const AVFrame& frame)
{
    const AVPixFmtDescriptor* const format =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    return format && (format->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

/// swscale copies alpha even into a format that has none, and Qt counts on 255 there.
void makeOpaque(QImage& image)
{
    for (int y = 0; y < image.height(); ++y) {
        void* const row = image.scanLine(y);
        auto* const pixels = static_cast<QRgb*>(row);
        std::for_each(pixels, pixels + image.width(), [](QRgb& pixel) { pixel |= 0xff000000; });
    }
}

/// Memory that swscale may write past the end of a row into: it works in blocks.
QImage paddedImage(QSize size)
{
    constexpr int block = 64;
    const int bytesPerLine = (size.width() * 4 + block - 1) / block * block;
    void* const memory = av_malloc(
        static_cast<std::size_t>(bytesPerLine) * static_cast<std::size_t>(size.height()) + block);
    if (!memory)
        return {};
    return {static_cast<uchar*>(memory), size.width(), size.height(), bytesPerLine,
            QImage::Format_RGB32,        av_free,      memory};
}

} // namespace

Orientation orientationOf(const AVStream& stream)
{
    const std::uint8_t* const data =
        av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (!data)
        return {};
    // x' = a x + c y, y' = b x + d y, with y down: rows of three numbers, a and b, c and d first.
    const void* const start = data;
    const auto* const matrix = static_cast<const std::int32_t*>(start);
    const double a = matrix[0], b = matrix[1], c = matrix[3], d = matrix[4];
    const double determinant = a * d - b * c;
    if (determinant == 0)
        return {};
    // The mirror comes first, so the turn is where it takes the downward axis.
    constexpr double quarter = 1.57079632679489662;
    const double turns = std::atan2(-c, d) / quarter;
    const int quarterTurns = static_cast<int>(std::lround(turns));
    if (std::abs(turns - quarterTurns) > 0.1)
        return {determinant < 0, 0};
    return {determinant < 0, (quarterTurns + 4) % 4};
}

QSize FrameImage::sizeOf(const AVFrame& frame) const
{
    return m_orientation.upright(squareSize(frame));
}

Result<QImage> FrameImage::render(const AVFrame& frame, QSize box)
{
    const QSize size = m_orientation.upright(fitted(sizeOf(frame), box));
    if (qint64{size.width()} * size.height() > maximumPixels)
        return Failure{"the frame is too large"};
    constexpr int flags = SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;
    QImage image = paddedImage(size);
    // 0RGB32 is Qt's RGB32 on any machine.
    m_scaler.reset(sws_getCachedContext(
        m_scaler.release(), frame.width, frame.height, static_cast<AVPixelFormat>(frame.format),
        size.width(), size.height(), AV_PIX_FMT_0RGB32, flags, nullptr, nullptr, nullptr));
    if (image.isNull() || !m_scaler)
        return Failure{"a frame of this kind cannot be shown"};
    constexpr int one = 1 << 16;
    sws_setColorspaceDetails(m_scaler.get(), sws_getCoefficients(FrameColours::matrixOf(frame)),
                             FrameColours::isFullRange(frame) ? 1 : 0,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, one, one);
    const std::array<std::uint8_t*, 4> planes = {image.bits()};
    const std::array<int, 4> strides = {static_cast<int>(image.bytesPerLine())};
    if (sws_scale(m_scaler.get(), frame.data, frame.linesize, 0, frame.height, planes.data(),
                  strides.data()) <= 0)
        return Failure{"a frame of this kind cannot be shown"};
    if (hasAlpha(frame))
        makeOpaque(image);
    return m_orientation.upright(image);
}
