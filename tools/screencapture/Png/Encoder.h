#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace Png {

/// A picture that is read row by row.
struct Source {
    std::uint32_t width = 0;  // pixels, 1 to 2^31 - 1
    std::uint32_t height = 0; // pixels, 1 to 2^31 - 1
    /// Writes the row `y` from the top as three bytes a pixel: red, green, blue. May be called more
    /// than once for a row, and on several threads at once.
    std::function<void(std::uint32_t y, std::uint8_t* rgb)> readRow;
};

/// The picture as a PNG file: 8-bit RGB, not interlaced, with its density in pHYs (pixels per
/// metre, rounded). On `workers` threads at most. All numbers of them from two on make the same
/// file, and one makes one that means the same. Throws std::bad_alloc when there is not memory
/// enough.
std::vector<std::uint8_t> encode(const Source& source, double dotsPerInch, unsigned workers);

} // namespace Png
