#pragma once

#include "Media/Av/H264Encoder.h"
#include "Movie/Core/Picture.h"

#include <cstdint>

/// H.264 without frames that refer to later ones, so that each packet can be written at once and
/// any range of them be copied.
class VideoEncoder : public H264Encoder {
public:
    static Result<VideoEncoder> create(int width, int height);

    /// `ticks` must be larger than the last picture's. The picture is not needed afterwards.
    Result<std::vector<Av::Packet>> encode(Picture& picture, std::int64_t ticks, bool isKey);

private:
    explicit VideoEncoder(Av::Codec codec);

    Av::Frame m_frame;
};
