#pragma once

#include <string>
#include <vector>

/// Video files that are made with the `ffmpeg` program.
namespace Videos {

/// Runs it on `words`; fails the running test when it fails.
void make(const std::vector<std::string>& words);

/// What `ffprobe` says about the first track's `entry`.
std::string probed(const std::string& path, const std::string& entry);

inline constexpr int frameRate = 30;

/// Grey frames of 64 x 48 pixels as raw video: the one with number n is of `greyOf(n)`.
std::string greyFrames(int count);
int greyOf(int number);

/// Encodes raw grey frames in `raw`, with `options` between input and output.
void encode(const std::string& raw, const std::vector<std::string>& options,
            const std::string& file);

/// The number of a frame from its grey.
int numberOf(int grey);

/// `bytes` with the matrix of the first track replaced: a, b, c, d as in x' = a x + c y, y' = b x +
/// d y.
std::string withMatrix(std::string bytes, int a, int b, int c, int d);

} // namespace Videos
