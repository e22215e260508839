#pragma once

#include "Media/Av/Handles.h"

#include <cstdint>
#include <optional>

/// The tracks of a file that are meant; null when there is none.
namespace Tracks {

/// The one that players show: a cover is none.
AVStream* picture(AVFormatContext& file);

AVStream* sound(AVFormatContext& file);

/// By the file's table, until when it shows or sounds what is decoded at `time`; both in the
/// track's ticks. Absent when the table does not say. For tracks that show what they decode at
/// once.
std::optional<std::int64_t> endOfSample(AVStream& track, std::int64_t time);

/// Whether all samples that are decoded up to `time`, in the track's ticks, and one after it are
/// known without reading on. Other containers' tables have the key frames only, those of fragmented
/// films what was read so far.
bool tableReachesBeyond(AVStream& track, std::int64_t time);

/// Other tracks are not read any more. `wanted` may be null.
void readOnly(AVFormatContext& file, const AVStream* wanted, const AVStream* alsoWanted = nullptr);

} // namespace Tracks
