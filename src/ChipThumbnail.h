#pragma once

#include "ChipContent.h"

/// What chips show of capture files.
namespace ChipThumbnail {

/// Reads `file`: a video's picture at 0.1 s and its duration, or any other file as a picture.
/// Absent for what is neither, or takes too long to read. Any thread.
std::optional<ChipContent> load(const QUrl& file);

/// The same on another thread: a large picture takes a tenth of a second, in which the main thread
/// has to hand the picture over to whoever pastes it. Calls `completion` there.
void loadInBackground(const QUrl& file,
                      std::function<void(const std::optional<ChipContent>& content)> completion);

} // namespace ChipThumbnail
