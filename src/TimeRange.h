#pragma once

/// A part of a video. Seconds; the duration may be infinite.
struct TimeRange {
    double start = 0;
    double duration = 0;
};
