#pragma once

#include "Media/GIF/ColourCount.h"
#include "Media/GIF/Pixel.h"

#include <array>
#include <vector>

namespace GIF {

using Palette = std::vector<Pixel>;

/// The `size` colours that are least unlike all that were counted; all of them when there are no
/// more than that. At least one.
Palette bestPalette(const ColourCount& count, std::size_t size);

/// How unlike those that were counted the nearest colours of `palette` are, in the mean.
double meanUnlikeness(const ColourCount& count, const Palette& palette);

/// Finds the place of the colour in a palette that is least unlike another. Not for two threads.
class PaletteSearch {
public:
    /// Of 1 to 256 colours.
    explicit PaletteSearch(Palette palette);

    const Palette& palette() const { return m_palette; }

    int nearest(Pixel colour)
    {
        Known& known = m_known[(colour ^ colour >> 9) % m_known.size()];
        if (known.colour != colour)
            known = {colour, find(colour)};
        return known.index;
    }

private:
    struct Known {
        Pixel colour = 0; // 0 is none: they are opaque
        int index = 0;
    };
    /// The colours that may be nearest to any in a cube of eight to a side.
    struct Cell {
        std::uint32_t first = 0;
        std::uint32_t count = 0; // 0 when it was not looked at
    };

    int find(Pixel colour);
    void fill(Cell& cell, int red, int green, int blue);

    Palette m_palette;
    std::vector<Known> m_known;
    std::vector<Cell> m_cells;
    std::vector<std::uint8_t> m_candidates;
};

} // namespace GIF
