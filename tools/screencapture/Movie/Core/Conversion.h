#pragma once

#include "Movie/Core/Picture.h"
#include "Support/ScreenTable.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// Puts pixels of a screen into a picture of it.
class Conversion {
public:
    /// For a screen of that width in pixels.
    explicit Conversion(int width);

    /// Brings `area` of the picture up to date and says whether that changed anything. `pixels` is
    /// its top left one, 0xRRGGBB in the lower 24 bits; rows are `stride` pixels apart.
    ///
    /// The area lies on the screen and starts at even coordinates; it ends at even ones too, or at
    /// the screen's edge, whose odd column or row is repeated.
    bool update(Picture& picture, const ScreenTable::PixelRect& area, const std::uint32_t* pixels,
                std::size_t stride);

private:
    bool updatePair(Picture& picture, const ScreenTable::PixelRect& area, int row,
                    const std::uint32_t* upper, const std::uint32_t* lower);

    // A pair of rows on its way into the picture, compared before it is copied.
    std::vector<std::uint8_t> m_upper;
    std::vector<std::uint8_t> m_lower;
    std::vector<std::uint8_t> m_blue;
    std::vector<std::uint8_t> m_red;
};
