#pragma once

#include "Media/Av/Encoder.h"

#include <cstdint>

/// H.264 without frames that refer to later ones. Packets come out at once, and key frames where
/// they are asked for.
class H264Encoder : public Encoder {
public:
    static constexpr int ticksASecond = 90000;

protected:
    explicit H264Encoder(Av::Codec codec)
        : Encoder(std::move(codec))
    {
    }

    /// What is the same for all, not yet open. `quality` is a constant rate factor: the smaller the
    /// better; `mostBetweenKeys` frames come between key frames should nobody ask.
    static Result<Av::Codec> prepared(int width, int height, int quality, int mostBetweenKeys);

    /// `ticks` are larger than the last frame's.
    Result<std::vector<Av::Packet>> encodeFrame(AVFrame& frame, std::int64_t ticks, bool isKey);
};
