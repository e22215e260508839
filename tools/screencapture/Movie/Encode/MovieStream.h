#pragma once

#include "Media/Av/Handles.h"
#include "Support/Result.h"

#include <cstdint>
#include <vector>

/// The bytes of a QuickTime movie in fragments: a head that says what the tracks are, then pieces
/// that can each be played as soon as they are there.
class MovieStream {
public:
    /// `sound` may be null. Times of packets are in these many ticks a second.
    static Result<MovieStream> create(const AVCodecParameters& video, int videoTicks,
                                      const AVCodecParameters* sound, int soundTicks);

    MovieStream(MovieStream&&) = default;
    ~MovieStream() = default;

    /// Packets of a track come in order; how long each lasts has to be right.
    PossibleFailure addVideo(AVPacket& packet);
    PossibleFailure addSound(AVPacket& packet);

    /// Makes a fragment of what was added since the last one.
    PossibleFailure closeFragment();

    /// The bytes that there are since the last call.
    std::vector<std::uint8_t> take();

private:
    MovieStream() = default;
    PossibleFailure begin(const AVCodecParameters& video, int videoTicks,
                          const AVCodecParameters* sound, int soundTicks);
    PossibleFailure add(AVPacket& packet, int track, int ticks);
    static int write(void* bytes, std::uint8_t* more, int count);

    std::unique_ptr<std::vector<std::uint8_t>> m_bytes; // at a place that FFmpeg remembers
    Av::Io m_io;
    Av::Output m_output;
    int m_videoTicks = 1;
    int m_soundTicks = 1;
};
