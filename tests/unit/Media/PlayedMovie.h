#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What a player makes of a movie file.
struct PlayedMovie {
    struct Packet {
        double time;        ///< When it shows or sounds, in seconds.
        double decodedTime; ///< When it is decoded, in seconds.
        bool isKey;
        std::string bytes;
    };
    struct Track {
        std::string codec;
        std::vector<Packet> packets;
        double duration = 0; ///< As its header says, in seconds.
    };
    struct Frame {
        double time;      ///< In seconds.
        int grey;         ///< In the middle.
        int edgeGrey;     ///< Halfway down the left edge.
        int topGrey;      ///< In the middle of the upper edge.
        std::string luma; ///< All of its brightness, row by row.
    };

    Track picture;
    Track sound; ///< Without a codec when there is none.
    int width = 0;
    int height = 0;
    std::string colours; ///< Range, primaries, transfer and matrix, as FFmpeg calls them.
    double turn = 0;     ///< Counterclockwise, in degrees.
    std::vector<Frame> frames;
    std::vector<float> samples;      ///< The left channel, from 0 s on.
    std::vector<float> rightSamples; ///< As many; of a single channel the same.
    int soundRate = 0;
    bool hasIndexInFront = false;

    /// Decodes nothing when that is not wanted. Throws std::runtime_error when it cannot be read.
    static PlayedMovie packetsOf(const std::string& path);
    static PlayedMovie of(const std::string& path);

    /// The greys of all frames.
    std::vector<int> greys() const;

    /// The place of the loudest sample between two places; in samples.
    int loudestBetween(int from, int to) const;
};
