#pragma once

#include "Media/Av/Handles.h"
#include "Media/FFmpeg/Patience.h"
#include "Support/Result.h"

#include <cstdint>
#include <memory>

/// The frames of a container's picture track one after the other, from wherever it was last sought.
class FrameDecoder {
public:
    /// Both outlive this. Other tracks are not read any more.
    static Result<std::unique_ptr<FrameDecoder>> open(AVFormatContext& file,
                                                      const Patience& patience);

    const AVStream& stream() const { return m_stream; }

    /// What shows at `time`, in the stream's ticks, is wanted next: frames that show before and
    /// that no other needs may be left out, if there is one at all that shows later but by then.
    void setWanted(std::int64_t time) { m_wanted = time; }

    /// The next frame by the order in which they show, its pts in the stream's ticks, its pixels'
    /// shape filled in. Nothing at the end, where the file is broken off, and when patience is
    /// over.
    Av::Frame next();

    /// Until when a frame shows that no other follows, in the stream's ticks.
    std::int64_t endOf(const AVFrame& frame) const;

    /// Whether the container's table says that a frame still shows at `time`, in the stream's
    /// ticks: then the next one need not be decoded to know that. No when that is not known.
    bool isKnownToShow(const AVFrame& frame, std::int64_t time) const;

    /// Goes on with the key frame at or before `time`, in the stream's ticks.
    bool seek(std::int64_t time);

    /// Whether a key frame that has not been read yet is known at or before `time`.
    bool hasNewKeyFrame(std::int64_t time) const;

    /// The decoding time of the first packet after the last seek; INT64_MIN when there is none.
    std::int64_t firstTime() const { return m_firstTime; }

private:
    FrameDecoder(AVFormatContext& file, AVStream& stream, const Patience& patience);
    PossibleFailure openCodec();
    void sendPacket();
    bool isDispensable(const AVPacket& packet);

    AVFormatContext& m_file;
    AVStream& m_stream;
    const Patience& m_patience;
    Av::Codec m_codec;
    Av::Packet m_packet;
    std::int64_t m_firstTime = INT64_MIN;
    std::int64_t m_lastTime = INT64_MIN;
    std::int64_t m_lastShown = INT64_MIN;
    std::int64_t m_wanted = INT64_MIN;
    std::int64_t m_closest = INT64_MIN; // of what was sent, the last that shows by then
};
