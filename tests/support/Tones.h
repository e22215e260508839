#pragma once

#include <string>
#include <vector>

/// What is heard in a film.
namespace Tones {

constexpr double rate = 48000; ///< Samples a second.

/// A film's sound as one channel, from time 0 on. Fails the running test when it cannot be decoded.
std::vector<float> soundOf(const std::string& film);

/// When each of the tones begins, in seconds.
std::vector<double> beginningsIn(const std::vector<float>& sound);

/// The one of `times` that is nearest to `time`; there is one.
double nearest(const std::vector<double>& times, double time);

} // namespace Tones
