#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

/// Owners of what FFmpeg's libraries allocate.
namespace Av {

struct Free {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    void operator()(SwsContext* context) const { sws_freeContext(context); }
    void operator()(AVIOContext* context) const
    {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};

using Frame = std::unique_ptr<AVFrame, Free>;
using Packet = std::unique_ptr<AVPacket, Free>;
using Codec = std::unique_ptr<AVCodecContext, Free>;
using Format = std::unique_ptr<AVFormatContext, Free>;
using Scaler = std::unique_ptr<SwsContext, Free>;
using Io = std::unique_ptr<AVIOContext, Free>;

} // namespace Av
