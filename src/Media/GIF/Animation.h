#pragma once

#include "Media/AnimatedGIF.h"
#include "Media/FrameReader.h"
#include "Media/GIF/Section.h"

#include <functional>
#include <memory>

namespace GIF {

using OpenVideo = std::function<Result<std::unique_ptr<FrameSource>>()>;

/// Gives the bytes of the file that AnimatedGIF::write makes to `sink`; none when there is no
/// frame. `open` is called for each thread that reads.
PossibleFailure animate(const OpenVideo& open, const AnimatedGIF::Frames& frames, const Sink& sink,
                        const Cancellation& cancellation);

} // namespace GIF
