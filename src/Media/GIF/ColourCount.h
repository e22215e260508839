#pragma once

#include "Media/GIF/Pixel.h"

#include <cstddef>
#include <vector>

namespace GIF {

/// How often colours are seen: each by itself as long as there are few, neighbours together when
/// there are many.
class ColourCount {
public:
    struct Entry {
        std::uint32_t count = 0;
        std::uint64_t red = 0, green = 0, blue = 0; ///< Sums.

        Pixel mean() const;
    };

    ColourCount();

    void add(Pixel colour, std::uint32_t times = 1);
    void add(const ColourCount& other);

    /// All that were seen, in an order that depends on nothing else.
    std::vector<Entry> entries() const;

private:
    struct Slot {
        std::uint32_t key = empty;
        Entry entry;
    };
    static constexpr std::uint32_t empty = 0xffffffff;

    void add(const Entry& entry, Pixel colour);
    Slot& slotOf(Pixel colour);
    void merge();

    std::vector<Slot> m_slots;
    std::size_t m_used = 0;
    Pixel m_mask = 0xffffff; // the bits that tell colours apart
};

} // namespace GIF
