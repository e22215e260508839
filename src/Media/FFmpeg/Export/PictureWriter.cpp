#include "Media/FFmpeg/Export/PictureWriter.h"

namespace {

constexpr int quality = 15;           // nobody sees a difference
constexpr int neverByItself = 100000; // frames between key frames: these are asked for

} // namespace

Result<PictureWriter> PictureWriter::create(const PictureKind& kind)
{
    Result<Av::Codec> codec = prepared(kind.width, kind.height, quality, neverByItself);
    if (!codec)
        return codec.failure();
    AVCodecContext& context = **codec;
    context.sample_aspect_ratio = kind.pixelShape;
    context.color_range = kind.range;
    context.colorspace = kind.space;
    context.color_primaries = kind.primaries;
    context.color_trc = kind.transfer;
    context.chroma_sample_location = kind.chroma;
    // Every core has an encoder of its own.
    context.thread_count = 1;
    if (PossibleFailure failure = open(context))
        return *failure;
    return PictureWriter(std::move(*codec));
}

Result<std::vector<Av::Packet>> PictureWriter::encode(AVFrame& frame, std::int64_t ticks,
                                                      bool isKey)
{
    return encodeFrame(frame, ticks, isKey);
}
