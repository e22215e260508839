#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace GIF {

/// What stands at a pixel of a frame: either of two numbers, whichever takes less room.
struct Choice {
    std::uint8_t first;
    std::uint8_t second; ///< The same where there is no choice.
};

/// Compresses the pixels of frames as GIF files have them (LZW, as in GIF89a's appendix F). Not for
/// two threads.
class Compressor {
public:
    Compressor();

    /// Appends a frame's image data to `file`. Numbers have `bits` bits, 2 to 8.
    void compress(std::span<const Choice> pixels, int bits, std::vector<std::uint8_t>& file);

private:
    using Code = std::uint16_t;
    class Output;

    /// Strings that have a code, by the code of all but the last number, and that number.
    struct Slot {
        std::uint32_t key = 0;
        Code code = 0;
    };

    void forget();
    Code longer(Code code, std::uint8_t number) const;
    void add(Code code, std::uint8_t number);
    std::size_t longestFrom(std::span<const Choice> pixels, std::uint8_t first, Code& code);

    std::vector<Slot> m_slots;
    std::uint32_t m_era = 0; // slots of earlier ones are empty
    Code m_firstFree = 0;
    Code m_next = 0;
};

} // namespace GIF
