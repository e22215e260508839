#pragma once

#include <memory>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

/// Owners of what FFmpeg's libraries allocate, and what they say.
namespace Av {

struct Free {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
    void operator()(AVIOContext* context) const
    {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
    void operator()(AVDictionary* dictionary) const { av_dict_free(&dictionary); }
};

using Frame = std::unique_ptr<AVFrame, Free>;
using Packet = std::unique_ptr<AVPacket, Free>;
using Codec = std::unique_ptr<AVCodecContext, Free>;
using Parameters = std::unique_ptr<AVCodecParameters, Free>;
using Output = std::unique_ptr<AVFormatContext, Free>;
using Io = std::unique_ptr<AVIOContext, Free>;

/// What an error number means.
inline std::string text(int error)
{
    char buffer[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, buffer, sizeof buffer);
    return buffer;
}

} // namespace Av
