#pragma once

#include "TimeRange.h"

#include <QUrl>

#include <functional>

/// Turns a part of a video into an animated GIF: at most ten frames a second and about 240 in all,
/// scaled down to fit into 800 x 800 pixels, all shown equally long, endlessly.
namespace GIFExporter {

/// Begins to make `destination` of `range` of `video`, and returns at once. A range whose duration
/// is not a positive finite number means the whole length of the video, from its start.
///
/// `completion` is called exactly once, on the main thread and never from within this call, with
/// whether the GIF is there, complete. A file at `destination` is replaced then; of an export that
/// fails there is nothing. When the application object goes, exports are given up, and nobody is
/// told. Main thread.
void exportVideo(const QUrl& video, TimeRange range, const QUrl& destination,
                 std::function<void(bool succeeded)> completion);

} // namespace GIFExporter
