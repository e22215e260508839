#pragma once

#include "Media/Av/Handles.h"

#include <cstdint>
#include <initializer_list>
#include <optional>

/// How many bytes at most the index of an MP4 takes that has all samples of these tracks of another
/// file; null ones do not count. With so much room in front of the samples they need not be moved
/// when the index is known. Absent when the other file has no table of them.
std::optional<std::int64_t> indexRoomFor(std::initializer_list<AVStream*> tracks);
