#pragma once

#include "Encoder.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Png {

/// A picture of few colours: each pixel is the number of its colour, from 0 on.
struct IndexedRows {
    /// Red, green and blue of each colour; 1 to 256 colours.
    std::vector<std::uint8_t> palette;
    /// Row by row, each after a filter byte that says it is not filtered.
    std::unique_ptr<std::uint8_t[]> rows; // not zeroed first: most pictures give up early
    std::size_t size = 0;                 // of `rows`, in bytes
};

/// Absent when the picture has more than 256 colours, which mostly turns out early.
std::optional<IndexedRows> indexed(const Source& source);

} // namespace Png
