#include "Media/Av/Encoder.h"

#include "Media/Av/Text.h"

Result<Av::Codec> Encoder::codecNamed(const char* name)
{
    av_log_set_level(AV_LOG_QUIET); // what goes wrong is said once, and not here
    const AVCodec* const codec = avcodec_find_encoder_by_name(name);
    if (!codec)
        return Failure{std::string("FFmpeg is built without the encoder ") + name};
    Av::Codec context(avcodec_alloc_context3(codec));
    if (!context)
        return Failure{"there is no memory left"};
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER; // as the container wants it
    return context;
}

PossibleFailure Encoder::open(AVCodecContext& codec)
{
    const int error = avcodec_open2(&codec, codec.codec, nullptr);
    if (error < 0)
        return Failure{std::string("the encoder ") + codec.codec->name +
                       " does not work: " + Av::text(error)};
    return std::nullopt;
}

Av::Parameters Encoder::parameters() const
{
    Av::Parameters parameters(avcodec_parameters_alloc());
    avcodec_parameters_from_context(parameters.get(), m_codec.get());
    return parameters;
}

Result<std::vector<Av::Packet>> Encoder::send(const AVFrame* frame)
{
    int error = avcodec_send_frame(m_codec.get(), frame);
    std::vector<Av::Packet> packets;
    while (error >= 0) {
        Av::Packet packet(av_packet_alloc());
        if (!packet)
            return Failure{"there is no memory left"};
        error = avcodec_receive_packet(m_codec.get(), packet.get());
        if (error >= 0)
            packets.push_back(std::move(packet));
    }
    if (error == AVERROR(EAGAIN) || error == AVERROR_EOF)
        return packets;
    return Failure{"cannot encode: " + Av::text(error)};
}
