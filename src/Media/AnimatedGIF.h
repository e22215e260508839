#pragma once

#include "Media/Cancellation.h"
#include "Support/Result.h"

#include <QSize>
#include <QString>

#include <vector>

/// Makes animated GIF files of videos.
namespace AnimatedGIF {

struct Frames {
    /// When to look at the video, in seconds of its time; they grow.
    std::vector<double> times;
    /// How long each frame shows, in hundredths of a second: 1 to 65535.
    int delay;
    /// Frames are scaled down to fit into this many pixels.
    QSize box;
};

/// Writes the frames that show at those times, upright, to a file that plays endlessly. Where no
/// frame shows, and none begins or has ended within a thirtieth of a second, there is none in the
/// GIF either; it is a failure when there is none at all.
///
/// The file has its name when it is complete and not before, is readable by its owner alone, and
/// replaces one that stands at `destination`; nothing stays behind of one that fails, is cancelled
/// or is killed. Takes less than 200 MB of memory for a film of up to 4K. Uses two cores. Any
/// thread.
PossibleFailure write(const QString& video, const Frames& frames, const QString& destination,
                      const Cancellation& cancellation = {});

} // namespace AnimatedGIF
