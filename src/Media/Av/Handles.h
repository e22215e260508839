#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

/// Owners of what FFmpeg's libraries allocate.
namespace Av {

struct Free {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
    void operator()(AVDictionary* dictionary) const { av_dict_free(&dictionary); }
    void operator()(AVIOContext* context) const
    {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};

struct Close {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

struct FreeOutput {
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};

using Frame = std::unique_ptr<AVFrame, Free>;
using Packet = std::unique_ptr<AVPacket, Free>;
using Codec = std::unique_ptr<AVCodecContext, Free>;
using Parameters = std::unique_ptr<AVCodecParameters, Free>;
using Dictionary = std::unique_ptr<AVDictionary, Free>;
using Io = std::unique_ptr<AVIOContext, Free>;
using Input = std::unique_ptr<AVFormatContext, Close>;
using Output = std::unique_ptr<AVFormatContext, FreeOutput>;

} // namespace Av
