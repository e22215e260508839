#pragma once

#include "Support/RegularFile.h"

#include <cstdint>
#include <functional>

/// Where to stop reading a video file: before a fragment of a movie whose table is broken off,
/// since FFmpeg takes the whole file for unreadable then. Otherwise the file's own end. Reads a
/// little here and there, until `isOver()`. Any thread.
std::int64_t readableEnd(const RegularFile& file, const std::function<bool()>& isOver);
