#pragma once

#include <string>
#include <vector>

/// A movie as the capture tool writes it, made of what stands here.
struct FilmedSegment {
    struct Frame {
        double time; ///< In seconds.
        int grey;    ///< Of the whole picture, 16 to 235.
    };

    int width = 64;
    int height = 48;
    std::vector<Frame> frames;
    double duration = 0; ///< In seconds: the last frame shows until then.
    bool hasSound = false;
    /// When there is a click in the sound, in samples; silence otherwise.
    std::vector<int> clicks;

    /// A frame every 1/rate s, all of one grey.
    static FilmedSegment steady(double duration, int rate, int grey);

    /// The file's bytes: a fragment every half second, a key frame every second.
    std::string bytes() const;

    /// `bytes` as if the first fragment, with the first key frame, had never been.
    static std::string withoutFirstFragment(const std::string& bytes);
};
