#pragma once

#include "Media/Av/Handles.h"
#include "Support/Result.h"

/// VP9 in other files does not say how its pictures are stored, which an MP4 has to: adds it to
/// `parameters`, by the first picture. Does nothing to other codecs.
PossibleFailure describeVp9(AVCodecParameters& parameters, const AVPacket& first);
