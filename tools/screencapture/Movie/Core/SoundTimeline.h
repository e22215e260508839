#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

/// Makes one unbroken stretch of sound, from the movie's start on, of what a microphone gives:
/// silence before it gives anything and where it gives nothing, and everything at the time at which
/// it was to be heard. Times are seconds since the movie's start; sound is interleaved stereo at
/// `rate` frames a second, and "frame" means a sample for each ear.
///
/// What a sound server says about a chunk's time is wrong in the first moments and wavers later. So
/// the first second is kept back, and its later half decides where the stretch begins; after that
/// small errors, as of two clocks that drift apart, are made up for by single frames, and large
/// ones, as of a stretch that was lost, by silence or a cut.
class SoundTimeline {
public:
    static constexpr int rate = 48000;
    static constexpr int channels = 2;

    /// A chunk, and when its first frame was to be heard, as far as is known.
    void add(std::span<const float> chunk, double time);

    /// It is `now`, and nothing of before `now` - `patience` will come any more.
    void passTo(double now);

    /// The movie ends at `end`; what is kept back is given, and silence up to there.
    void finish(double end);

    /// Takes `frames` frames from the front, if there are as many; empty otherwise.
    std::vector<float> take(std::size_t frames);

    static constexpr double patience = 0.5;

private:
    void settle();
    void place(std::span<const float> chunk, double error);
    void addSilenceUpTo(double time);
    double givenUpTo() const { return static_cast<double>(m_given) / rate; }

    std::vector<float> m_heldBack;
    std::vector<double> m_starts; // for each chunk held back: when the first of all would have been
    bool m_isSettled = false;
    double m_error = 0;        // smoothed; how much later than placed sound was to be heard
    std::int64_t m_given = 0;  // frames, from the movie's start on
    std::deque<float> m_ready; // the last of them, not taken yet
};
