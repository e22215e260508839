#pragma once

#include "Media/Av/Handles.h"

/// The tracks of a file that are meant; null when there is none.
namespace Tracks {

/// The one that players show: a cover is none.
AVStream* picture(AVFormatContext& file);

AVStream* sound(AVFormatContext& file);

/// Other tracks are not read any more. `wanted` may be null.
void readOnly(AVFormatContext& file, const AVStream* wanted, const AVStream* alsoWanted = nullptr);

} // namespace Tracks
