#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Png {

/// How the rows of a picture are made ready for deflate (ISO/IEC 15948, section 9).
enum class Filtering {
    None,     ///< As they are: best where pixels repeat exactly, as in text and flat surfaces.
    Adaptive, ///< Each row by the filter that leaves the smallest numbers: best for photographs.
};

/// Filters the rows of one run of rows, from top to bottom. Not for several threads at once.
class RowFilter {
public:
    /// `pixelBytes` is the distance to the left neighbour, `rowBytes` a multiple of it.
    RowFilter(Filtering filtering, std::size_t pixelBytes, std::size_t rowBytes);

    /// Where the caller puts the next row, rowBytes of it.
    std::uint8_t* nextRow() { return m_row.data() + m_pixelBytes; }

    /// Makes what nextRow points at the row above the next one, without writing it anywhere.
    void skip() { m_row.swap(m_above); }

    /// Writes the row that nextRow points at as filter byte and rowBytes of filtered bytes.
    void write(std::uint8_t* filtered);

private:
    Filtering m_filtering;
    std::size_t m_pixelBytes;
    std::size_t m_rowBytes;
    // Both start with one pixel of zeros, which stands left of the first one.
    std::vector<std::uint8_t> m_row;
    std::vector<std::uint8_t> m_above;
    std::vector<std::uint8_t> m_best;
    std::vector<std::uint8_t> m_trial;
};

} // namespace Png
