#include "Movie/Encode/VideoEncoder.h"

#include <new>

namespace {

constexpr int quality = 18;
constexpr int neverByItself = 1000; // frames between key frames: these are asked for

void borrowNothing(void*, std::uint8_t*) {}

} // namespace

VideoEncoder::VideoEncoder(Av::Codec codec)
    : H264Encoder(std::move(codec))
    , m_frame(av_frame_alloc())
{
    if (!m_frame)
        throw std::bad_alloc();
}

Result<VideoEncoder> VideoEncoder::create(int width, int height)
{
    Result<Av::Codec> codec = prepared(width, height, quality, neverByItself);
    if (!codec)
        return codec.failure();
    AVCodecContext& context = **codec;
    context.color_range = AVCOL_RANGE_MPEG;
    context.colorspace = AVCOL_SPC_BT709;
    context.color_primaries = AVCOL_PRI_BT709;
    context.color_trc = AVCOL_TRC_BT709;
    context.chroma_sample_location = AVCHROMA_LOC_CENTER;
    if (PossibleFailure failure = open(context))
        return *failure;
    return VideoEncoder(std::move(*codec));
}

Result<std::vector<Av::Packet>> VideoEncoder::encode(Picture& picture, std::int64_t ticks,
                                                     bool isKey)
{
    av_frame_unref(m_frame.get());
    AVFrame& frame = *m_frame;
    frame.format = AV_PIX_FMT_YUV420P;
    frame.width = picture.width();
    frame.height = picture.height();
    frame.color_range = AVCOL_RANGE_MPEG;
    frame.colorspace = AVCOL_SPC_BT709;
    // Without a buffer of its own the library would copy the picture.
    frame.buf[0] = av_buffer_create(picture.bytes(), picture.size(), borrowNothing, nullptr, 0);
    frame.data[0] = picture.lumaRow(0);
    frame.data[1] = picture.colourRow(Picture::Colour::Blue, 0);
    frame.data[2] = picture.colourRow(Picture::Colour::Red, 0);
    frame.linesize[0] = static_cast<int>(picture.lumaStride());
    frame.linesize[1] = frame.linesize[2] = static_cast<int>(picture.colourStride());
    return encodeFrame(frame, ticks, isKey);
}
