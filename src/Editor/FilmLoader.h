#pragma once

#include "Media/Cancellation.h"
#include "Media/FilmTimes.h"

#include <QImage>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

/// Reads of a film what takes longer than a turn of the event loop, on other threads, from where
/// the callbacks are called too.
struct FilmLoader {
    using GotTimes = std::function<void(const std::optional<FilmTimes>& times)>;
    using GotFrame = std::function<void(int index, const QImage& frame)>;

    std::function<void(const QString& path, GotTimes got, const Cancellation& cancellation)>
        readTimes;
    /// The frames that show at `times`, in their order, no larger than `box`; without those that
    /// cannot be read.
    std::function<void(const QString& path, const std::vector<double>& times, QSize box,
                       GotFrame got, const Cancellation& cancellation)>
        readFrames;

    /// From the file itself.
    static FilmLoader system();
};
