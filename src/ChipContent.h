#pragma once

#include "Support/Geometry.h"

#include <QImage>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

/// What a chip shows of a capture file.
struct ChipContent {
    /// The picture as far as the chip shows it: the middle part, in the proportions of the chip.
    /// Never null.
    QImage thumbnail;
    /// The whole picture's width and height in points.
    Geometry::Size pictureSize;
    /// How long a video is, such as "▶ 2:05".
    std::optional<QString> badge;
};

/// Reads what a chip shows of a file, and hands it to `completion`, once and on any thread, during
/// the call or after it; absent when the file cannot be shown.
using LoadChipContent = std::function<void(
    const QUrl& file, std::function<void(const std::optional<ChipContent>& content)> completion)>;

/// The badge of a video that lasts so many seconds; absent when that is no finite number. Seconds
/// are cut off, not rounded.
std::optional<QString> durationBadge(double seconds);
