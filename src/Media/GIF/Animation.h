#pragma once

#include "Media/AnimatedGIF.h"
#include "Media/FrameReader.h"
#include "Media/GIF/Section.h"

#include <functional>
#include <memory>

namespace GIF {

using OpenVideo = std::function<Result<std::unique_ptr<FrameSource>>()>;

/// How much memory each half of a GIF's frames may take before some of them are written, and how
/// much of the later half's bytes are kept until the earlier one is in the file.
inline constexpr std::size_t usuallyKept = 20'000'000;

/// Gives the bytes of the file that AnimatedGIF::write makes to `sink`; none when there is no
/// frame. `open` is called for each thread that reads. What is thrown meanwhile is a failure.
PossibleFailure animate(const OpenVideo& open, const AnimatedGIF::Frames& frames, const Sink& sink,
                        const Cancellation& cancellation, std::size_t mostKept = usuallyKept);

} // namespace GIF
