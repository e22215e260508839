#include "IndexedRows.h"

#include <array>
#include <cstddef>

namespace Png {

namespace {

constexpr std::size_t mostColours = 256;

/// The rows are read in this many passes, like the teeth of a comb, so that a picture of many
/// colours shows them soon wherever they are.
constexpr std::uint32_t passes = 16;

/// Gives each new colour the next number.
class ColourNumbers {
public:
    /// Below mostColours, or mostColours when there are too many colours.
    std::size_t numberOf(std::uint32_t rgb)
    {
        // A multiplicative hash; its upper bits are the well mixed ones. There are four times as
        // many slots as colours, so a free one is always near.
        std::size_t at = (rgb * 2654435769U) >> (32 - slotBits);
        while (m_slots[at].isUsed) {
            if (m_slots[at].rgb == rgb)
                return m_slots[at].number;
            at = (at + 1) % m_slots.size();
        }
        if (m_count == mostColours)
            return mostColours;
        m_slots[at] = {rgb, static_cast<std::uint16_t>(m_count), true};
        for (int shift = 16; shift >= 0; shift -= 8)
            m_palette.push_back(static_cast<std::uint8_t>(rgb >> shift));
        return m_count++;
    }

    std::vector<std::uint8_t> takePalette() { return std::move(m_palette); }

private:
    static constexpr int slotBits = 10;

    struct Slot {
        std::uint32_t rgb = 0;
        std::uint16_t number = 0;
        bool isUsed = false;
    };

    std::array<Slot, std::size_t{1} << slotBits> m_slots;
    std::vector<std::uint8_t> m_palette;
    std::size_t m_count = 0;
};

/// False when there are too many colours.
bool indexRow(const std::uint8_t* rgb, std::size_t width, ColourNumbers& numbers, std::uint8_t* out)
{
    std::uint32_t colour = ~std::uint32_t{0}; // of the pixel before; none has this one
    std::size_t number = 0;
    for (std::size_t x = 0; x < width; ++x, rgb += 3) {
        const std::uint32_t next =
            std::uint32_t{rgb[0]} << 16 | std::uint32_t{rgb[1]} << 8 | std::uint32_t{rgb[2]};
        if (next != colour) {
            colour = next;
            number = numbers.numberOf(colour);
            if (number == mostColours)
                return false;
        }
        out[x] = static_cast<std::uint8_t>(number);
    }
    return true;
}

} // namespace

std::optional<IndexedRows> indexed(const Source& source)
{
    const std::size_t rowBytes = std::size_t{1} + source.width;
    IndexedRows picture;
    picture.size = rowBytes * source.height;
    picture.rows = std::make_unique_for_overwrite<std::uint8_t[]>(picture.size);
    std::vector<std::uint8_t> rgb(std::size_t{3} * source.width);
    ColourNumbers numbers;
    for (std::uint32_t pass = 0; pass < passes; ++pass) {
        for (std::uint64_t y = pass; y < source.height; y += passes) {
            source.readRow(static_cast<std::uint32_t>(y), rgb.data());
            std::uint8_t* const row = picture.rows.get() + rowBytes * y;
            row[0] = 0; // not filtered
            if (!indexRow(rgb.data(), source.width, numbers, row + 1))
                return std::nullopt;
        }
    }
    picture.palette = numbers.takePalette();
    return picture;
}

} // namespace Png
