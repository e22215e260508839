#pragma once

#include "Media/Av/H264Encoder.h"
#include "Media/FFmpeg/Export/PictureKind.h"

/// H.264 without frames that refer to later ones, from frames of one kind. What it says about its
/// track depends on the kind alone, so that several of them can share one.
class PictureWriter : public H264Encoder {
public:
    static Result<PictureWriter> create(const PictureKind& kind);

    /// Packets come out at once. `ticks` are larger than the last frame's.
    Result<std::vector<Av::Packet>> encode(AVFrame& frame, std::int64_t ticks, bool isKey);

private:
    explicit PictureWriter(Av::Codec codec)
        : H264Encoder(std::move(codec))
    {
    }
};
