#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Png {

/// A picture's rows in runs of about the same height, which workers take one by one. How many
/// workers they are and how fast each is changes nothing in the file; but one alone gets all rows
/// in one run, since it takes time to join what becomes of several.
class Bands {
public:
    /// A band is at least so many bytes, and less than twice as many unless it is a single row.
    /// Smaller ones share the work more evenly, larger ones make the file smaller.
    static constexpr std::size_t bandBytes = 1 << 20;

    /// Of fewer, threads take as much time as they save, or more.
    static constexpr std::size_t fewest = 4;

    /// `lineBytes` is what a row takes. At least one row, and one worker.
    Bands(std::uint32_t height, std::size_t lineBytes, unsigned workers)
        : m_height(height)
        , m_count(std::min<std::size_t>(lineBytes * height / bandBytes, height))
    {
        if (workers < 2 || m_count < fewest)
            m_count = 1;
    }

    std::size_t count() const { return m_count; }

    /// The first row of a band, or the end of the last one.
    std::uint32_t start(std::size_t band) const
    {
        return static_cast<std::uint32_t>(std::uint64_t{m_height} * band / m_count);
    }

    std::size_t mostRows() const { return (m_height + m_count - 1) / m_count; }

private:
    std::uint32_t m_height;
    std::size_t m_count;
};

} // namespace Png
