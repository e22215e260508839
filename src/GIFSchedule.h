#pragma once

#include "TimeRange.h"

#include <vector>

/// Which frames of a video an animated GIF shows, and how long it shows each.
struct GIFSchedule {
    /// In seconds of the video's time: whole 600ths from the range's start on, so that nothing from
    /// before it shows. Never empty.
    std::vector<double> times;
    /// How long each frame shows, in hundredths of a second as GIF files count: 1 to 65535.
    int delay = 0;

    /// Ten frames a second, or 240 in all where that would be more. A range whose duration is not a
    /// positive finite number means the video's duration (seconds); what is shorter than 0.2 s is
    /// taken for that long. A duration that gives no number of frames is fatal.
    static GIFSchedule of(TimeRange range, double videoDuration);
};
