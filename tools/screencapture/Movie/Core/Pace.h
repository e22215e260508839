#pragma once

/// When the frames of a movie are due. Times are seconds since its start.
///
/// Never more than 60 a second. Fewer, at even distances, when the encoder does not keep up. At
/// least two a second however little happens, so that what is on disk is never far behind, and one
/// of them a key frame at least every second.
class Pace {
public:
    static constexpr double fastest = 1.0 / 60;
    static constexpr double slowest = 1.0 / 5;
    /// The longest that nothing is written.
    static constexpr double heartbeat = 0.48;

    /// The next frame comes no sooner than this.
    double earliest() const { return m_earliest; }
    /// The next frame comes no later than this, if the machine can.
    double latest() const;
    /// Whether a frame at `time` has to be a key frame.
    bool isKeyDue(double time) const;
    /// The distance of frames at the moment.
    double interval() const { return m_steps * fastest; }

    /// The screen was looked at, and nothing had changed.
    void lookedAt(double time);
    /// A frame was taken.
    void tookFrame(double time, bool isKey);
    /// A frame was encoded in that many seconds; they are what the encoder keeps up with.
    void encoded(double time, double seconds);

private:
    int m_steps = 1; // of `fastest` between frames
    double m_earliest = 0;
    int m_frames = 0;
    double m_lastFrame = 0;
    double m_lastKey = 0;
    double m_effort = 0;      // seconds a frame, smoothed
    double m_lastChange = -1; // of m_steps
};
