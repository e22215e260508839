#pragma once

#include "Media/Av/Handles.h"

/// What the numbers in a frame mean.
namespace FrameColours {

/// The matrix of its colours, as swscale calls it; of a frame that says nothing by its size, as
/// players do.
int matrixOf(const AVFrame& frame);

/// Whether black is 0, rather than 16.
bool isFullRange(const AVFrame& frame);

} // namespace FrameColours
