#pragma once

#include <optional>
#include <vector>

/// Seconds of a film, from one frame's beginning to another's, or to the film's end.
struct FilmRange {
    double start = 0;
    double end = 0;

    friend bool operator==(const FilmRange&, const FilmRange&) = default;
};

/// When the frames of a film begin to show: where a range of it may begin and end.
class FrameGrid {
public:
    /// One frame, of no length: nothing is known.
    FrameGrid() = default;
    /// `frames` rise. The first one shows from the film's beginning, the last one to its end.
    FrameGrid(std::vector<double> frames, double duration);

    /// For a film of which no more is known than its length and, perhaps, its frames a second.
    static FrameGrid even(double duration, std::optional<double> frameRate = {});

    double duration() const { return m_duration; }
    int count() const { return static_cast<int>(m_frames.size()); }

    /// The number of the frame that shows at `time`, the first or the last one outside the film.
    int frameAt(double time) const;

    /// When a frame begins; the film's end for the number after the last one's.
    double startOf(int frame) const;

    /// Which frame's beginning, or the film's end, is nearest to `time`.
    int nearest(double time) const;

private:
    std::vector<double> m_frames = {0}; // never empty
    double m_duration = 0;
};
