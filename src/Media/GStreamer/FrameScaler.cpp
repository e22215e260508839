#include "Media/GStreamer/FrameScaler.h"

#include <QRect>

#include <algorithm>

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace {

/// The middle of a frame: a square in which samples of colour are whole.
QRect middleOf(const QSize& size)
{
    const int side = std::min(size.width(), size.height()) & ~1;
    return {((size.width() - side) / 2) & ~1, ((size.height() - side) / 2) & ~1, side, side};
}

/// Where the middle begins in a plane, in bytes.
std::ptrdiff_t offsetOf(const CameraFrame& frame, std::size_t plane, const QPoint& middle)
{
    const AVPixFmtDescriptor& kind = *av_pix_fmt_desc_get(frame.format);
    const int x = plane > 0 ? middle.x() >> kind.log2_chroma_w : middle.x();
    const int y = plane > 0 ? middle.y() >> kind.log2_chroma_h : middle.y();
    int step = 0; // of a place in this plane
    for (int i = 0; i < kind.nb_components; ++i) {
        const AVComponentDescriptor& component = kind.comp[i];
        if (component.plane == static_cast<int>(plane) && (step == 0 || component.step < step))
            step = component.step;
    }
    return std::ptrdiff_t{y} * frame.strides[plane] + std::ptrdiff_t{x} * step;
}

} // namespace

void FrameScaler::Free::operator()(SwsContext* context) const
{
    sws_freeContext(context);
}

FrameScaler::FrameScaler() = default;
FrameScaler::~FrameScaler() = default;

QImage FrameScaler::square(const CameraFrame& frame, int side)
{
    const QRect middle = middleOf(frame.size);
    QImage picture(side, side, QImage::Format_RGB32);
    if (frame.format == AV_PIX_FMT_NONE || middle.isEmpty() || picture.isNull())
        return {};
    const int quality = side < middle.width() ? SWS_AREA : SWS_BICUBIC;
    m_context.reset(sws_getCachedContext(m_context.release(), middle.width(), middle.height(),
                                         frame.format, side, side, AV_PIX_FMT_RGB32, quality,
                                         nullptr, nullptr, nullptr));
    if (!m_context)
        return {};
    sws_setColorspaceDetails(
        m_context.get(), sws_getCoefficients(frame.isBt709 ? SWS_CS_ITU709 : SWS_CS_ITU601),
        frame.isFullRange ? 1 : 0, sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
    std::array<const std::uint8_t*, 4> begins{};
    for (std::size_t i = 0; i < begins.size() && frame.planes[i]; ++i)
        begins[i] = frame.planes[i] + offsetOf(frame, i, middle.topLeft());
    std::uint8_t* const lines = picture.bits();
    const int lineBytes = static_cast<int>(picture.bytesPerLine());
    const bool isDone = sws_scale(m_context.get(), begins.data(), frame.strides.data(), 0,
                                  middle.height(), &lines, &lineBytes) == side;
    return isDone ? picture : QImage();
}
