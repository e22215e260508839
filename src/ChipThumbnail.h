#pragma once

#include "ChipContent.h"

/// What chips show of capture files.
namespace ChipThumbnail {

/// Reads `file`: a video's picture at 0.1 s and its duration, or any other file as a picture.
/// Absent for what is neither, or takes too long to read.
std::optional<ChipContent> load(const QUrl& file);

} // namespace ChipThumbnail
