#include "Media/FFmpeg/Export/PictureWriter.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace {

constexpr int framesASecond = 60;     // at most; tells the rate control, not the times
constexpr int neverByItself = 100000; // frames between key frames: these are asked for

} // namespace

Result<PictureWriter> PictureWriter::create(const PictureKind& kind)
{
    Result<Av::Codec> codec = codecNamed("libx264");
    if (!codec)
        return codec.failure();
    AVCodecContext& context = **codec;
    context.width = kind.width;
    context.height = kind.height;
    context.pix_fmt = AV_PIX_FMT_YUV420P;
    context.sample_aspect_ratio = kind.pixelShape;
    context.color_range = kind.range;
    context.colorspace = kind.space;
    context.color_primaries = kind.primaries;
    context.color_trc = kind.transfer;
    context.chroma_sample_location = kind.chroma;
    context.time_base = {1, ticksASecond};
    context.framerate = {framesASecond, 1};
    context.gop_size = neverByItself;
    context.max_b_frames = 0;
    // Every core has an encoder of its own.
    context.thread_count = 1;
    av_opt_set(context.priv_data, "preset", "superfast", 0);
    av_opt_set(context.priv_data, "tune", "zerolatency", 0);
    av_opt_set(context.priv_data, "crf", "15", 0);
    av_opt_set(context.priv_data, "forced-idr", "1", 0);
    if (PossibleFailure failure = open(context))
        return *failure;
    return PictureWriter(std::move(*codec));
}

Result<std::vector<Av::Packet>> PictureWriter::encode(AVFrame& frame, std::int64_t ticks,
                                                      bool isKey)
{
    frame.pts = ticks;
    frame.pict_type = isKey ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    return send(&frame);
}
