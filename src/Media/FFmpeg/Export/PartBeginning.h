#pragma once

#include "Media/Av/Handles.h"

#include <cstdint>
#include <deque>

/// A part of a track, in its ticks.
struct TrackPart {
    std::int64_t begin = 0;
    std::int64_t end = 0;
};

/// Prepares the pictures with which a part of a film begins, in the order in which they are
/// decoded and from a key frame on: the one that shows at the beginning begins there, since players
/// leave out what begins before. So much of the part, in ticks, has sound; the last picture of a
/// film stays as long. False when nothing plays in the part.
bool beginPart(std::deque<Av::Packet>& pictures, TrackPart part, std::int64_t sound,
               AVRational ticks);
