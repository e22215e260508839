#pragma once

#include "Media/GIF/Compressor.h"
#include "Media/GIF/PackedFrames.h"
#include "Media/GIF/Palette.h"

#include <optional>
#include <vector>

namespace GIF {

/// A frame as it is to be written: the part of it that changes.
struct IndexedFrame {
    int x = 0, y = 0, width = 0, height = 0;
    std::vector<Choice> pixels;
};

/// Says of every pixel of one frame after another which colour of the palette it is to have, or
/// that it stays as it is.
class FrameMapping {
public:
    FrameMapping(int width, int height);

    /// From now on, with at most 255 colours. Pixels that are shown stay as they are. A pixel also
    /// stays where that is worse by no more than `tolerance` (a distance).
    void setPalette(const Palette& palette, int tolerance);
    const Palette& palette() const { return m_search->palette(); }

    /// What shows nothing new is transparent: the number after the last colour.
    std::uint8_t transparent() const { return static_cast<std::uint8_t>(palette().size()); }

    /// The next frame of `frames`.
    IndexedFrame next(PackedFrames::Reader& frames);

private:
    void map(Span span);
    IndexedFrame changedPart() const;

    int m_width, m_height;
    std::optional<PaletteSearch> m_search;
    int m_tolerance = 0;
    bool m_isFirst = true;
    std::vector<Pixel> m_wanted; // the frame as it should look
    std::vector<Pixel> m_shown;  // as it looks
    std::vector<std::uint8_t>
        m_indices; // where the shown colours are in the palette, or `transparent`
    std::vector<std::uint8_t> m_isNew; // 1 where this frame changes what shows
};

} // namespace GIF
