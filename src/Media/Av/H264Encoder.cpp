#include "Media/Av/H264Encoder.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace {

constexpr int framesASecond = 60; // at most; tells the rate control, not the times

} // namespace

Result<Av::Codec> H264Encoder::prepared(int width, int height, int quality, int mostBetweenKeys)
{
    Result<Av::Codec> codec = codecNamed("libx264");
    if (!codec)
        return codec;
    AVCodecContext& context = **codec;
    context.width = width;
    context.height = height;
    context.pix_fmt = AV_PIX_FMT_YUV420P;
    context.time_base = {1, ticksASecond};
    context.framerate = {framesASecond, 1};
    context.gop_size = mostBetweenKeys;
    context.max_b_frames = 0;
    // The slowest that keeps up with full motion on two cores; text stays crisp.
    av_opt_set(context.priv_data, "preset", "superfast", 0);
    av_opt_set(context.priv_data, "tune", "zerolatency", 0);
    av_opt_set_int(context.priv_data, "forced-idr", 1, 0);
    av_opt_set_double(context.priv_data, "crf", quality, 0);
    return codec;
}

Result<std::vector<Av::Packet>> H264Encoder::encodeFrame(AVFrame& frame, std::int64_t ticks,
                                                         bool isKey)
{
    frame.pts = ticks;
    frame.pict_type = isKey ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    return send(&frame);
}
