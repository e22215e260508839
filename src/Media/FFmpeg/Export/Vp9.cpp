#include "Media/FFmpeg/Export/Vp9.h"

PossibleFailure describeVp9(AVCodecParameters& parameters, const AVPacket& first)
{
    if (parameters.codec_id != AV_CODEC_ID_VP9 || parameters.format != AV_PIX_FMT_NONE)
        return {};
    // A picture begins with the bits 10 and the profile; the first one, 0, has a single kind of
    // pixels.
    constexpr int marked = 0x80, markAndProfile = 0xF0;
    if (first.size < 1 || (first.data[0] & markAndProfile) != marked)
        return Failure{"this kind of VP9 cannot be copied"};
    parameters.format = AV_PIX_FMT_YUV420P;
    return {};
}
