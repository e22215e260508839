#pragma once

#include "Media/GIF/Compressor.h"
#include "Media/GIF/FrameMapping.h"

#include <QSize>

#include <cstdint>
#include <vector>

/// The pieces that a GIF file (GIF89a) consists of, one behind the other.
namespace GIF {

using Bytes = std::vector<std::uint8_t>;

/// The beginning of a file that plays endlessly, with the colours of all frames that have none of
/// their own.
Bytes beginning(QSize size, const Palette& palette);

/// One frame that shows for `delay` hundredths of a second, over what showed before. With colours
/// of its own where `palette` is not the file's.
void appendFrame(Bytes& file, const IndexedFrame& frame, int delay, const Palette& palette,
                 bool isPaletteOfFile, Compressor& compressor);

void appendEnd(Bytes& file);

} // namespace GIF
