#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Png {

/// A code of deflate (RFC 1951, section 3.2.2), to be stepped through rather than decoded: what
/// counts is how many bits a symbol takes, and what kind of symbol it is.
class PrefixCode {
public:
    static constexpr int longest = 15; // bits
    static constexpr std::size_t mostSymbols = 288;

    /// What to know of a symbol.
    struct Symbol {
        std::uint8_t kind = 0;      // below `unknown`
        std::uint8_t extraBits = 0; // which follow its code
    };

    struct Step {
        std::uint8_t kind = unknown;
        std::uint8_t bits = 0; // of the code and of what follows it
    };

    /// The kind where the code has no symbol.
    static constexpr std::uint8_t unknown = 0xff;

    /// `lengths` has the number of bits of each symbol's code, 0 where there is none. False when
    /// there can be no such code.
    bool set(std::span<const std::uint8_t> lengths, std::span<const Symbol> symbols);

    /// The step from where these are the next bits, of which as many count as a step may take.
    Step step(std::uint64_t bits) const
    {
        const Step near = m_near[bits % m_near.size()];
        return near.bits != 0 ? near : farStep(bits);
    }

private:
    static constexpr int nearBits = 10;

    void fillNear(unsigned code, int length, Step step);
    Step farStep(std::uint64_t bits) const;

    std::array<Step, std::size_t{1} << nearBits> m_near; // by the next bits; 0 bits when farther
    std::array<std::uint16_t, longest + 1> m_counts{};   // of the codes of each length
    std::array<Step, mostSymbols> m_inOrder;             // of their codes
};

} // namespace Png
