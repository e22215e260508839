#pragma once

#include "Media/AnimatedGIF.h"

/// As AnimatedGIF::write.
PossibleFailure writeGIF(const QString& video, const AnimatedGIF::Frames& frames,
                         const QString& destination, const Cancellation& cancellation);
