#pragma once

#include <QImage>

#include <string>
#include <vector>

/// What two players that have nothing in common make of a GIF file.
struct PlayedGIF {
    std::vector<QImage> frames; ///< As they show; RGB32.
    std::vector<int> delays;    ///< In hundredths of a second.
    bool isEndless = false;

    /// By Qt and by FFmpeg; fails the running test where they do not agree.
    static PlayedGIF of(const std::string& path);

    /// The grey in the middle of each frame.
    std::vector<int> greys() const;
};
