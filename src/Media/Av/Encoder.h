#pragma once

#include "Media/Av/Handles.h"
#include "Support/Result.h"

#include <vector>

/// What all encoders have in common: frames go in, packets come out.
class Encoder {
public:
    /// What a file says about the track.
    Av::Parameters parameters() const;

    /// Ticks a second of its packets' times.
    int ticksASecond() const { return m_codec->time_base.den; }

    /// What is left inside, at the end.
    Result<std::vector<Av::Packet>> finish() { return send(nullptr); }

protected:
    explicit Encoder(Av::Codec codec)
        : m_codec(std::move(codec))
    {
    }

    static Result<Av::Codec> codecNamed(const char* name);
    static PossibleFailure open(AVCodecContext& codec);

    AVCodecContext& codec() { return *m_codec; }
    Result<std::vector<Av::Packet>> send(const AVFrame* frame);

private:
    Av::Codec m_codec;
};
