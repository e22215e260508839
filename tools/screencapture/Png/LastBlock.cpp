#include "LastBlock.h"

#include "BitReader.h"
#include "PrefixCode.h"

#include <algorithm>
#include <array>

namespace Png {

namespace {

// Kinds of symbols.
constexpr std::uint8_t literal = 0;
constexpr std::uint8_t repetition = 1; // a distance follows
constexpr std::uint8_t blockEnd = 2;

constexpr std::size_t literalsAndLengths = 288;
constexpr std::size_t distances = 32;
constexpr std::size_t lengthSymbols = 19; // of the code that the other two codes come in

using Lengths = std::array<std::uint8_t, literalsAndLengths + distances>;

constexpr auto literalAndLengthSymbols = [] {
    std::array<PrefixCode::Symbol, literalsAndLengths> symbols{};
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        const bool hasExtraBits = i >= 265 && i < 285;
        symbols[i] = {i < 256 ? literal : repetition,
                      static_cast<std::uint8_t>(hasExtraBits ? (i - 261) / 4 : 0)};
    }
    symbols[256].kind = blockEnd;
    symbols[286].kind = symbols[287].kind = PrefixCode::unknown;
    return symbols;
}();

constexpr auto distanceSymbols = [] {
    std::array<PrefixCode::Symbol, distances> symbols{};
    for (std::size_t i = 0; i < symbols.size(); ++i)
        symbols[i] = {repetition, static_cast<std::uint8_t>(i < 4 ? 0 : (i - 2) / 2)};
    symbols[30].kind = symbols[31].kind = PrefixCode::unknown;
    return symbols;
}();

constexpr auto lengthCodeSymbols = [] {
    std::array<PrefixCode::Symbol, lengthSymbols> symbols{};
    for (std::size_t i = 0; i < symbols.size(); ++i)
        symbols[i] = {static_cast<std::uint8_t>(i), 0};
    return symbols;
}();

/// The codes of a block (RFC 1951, sections 3.2.5 to 3.2.7).
class Codes {
public:
    bool setFixed()
    {
        Lengths lengths;
        for (std::size_t i = 0; i < literalsAndLengths; ++i)
            lengths[i] = i < 144 ? 8 : i < 256 ? 9 : i < 280 ? 7 : 8;
        std::fill(lengths.begin() + literalsAndLengths, lengths.end(), std::uint8_t{5});
        return set(lengths, literalsAndLengths, distances);
    }

    /// Reads them from the head of the block.
    bool read(BitReader& in)
    {
        constexpr std::array<std::uint8_t, lengthSymbols> order{16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                                11, 4,  12, 3, 13, 2, 14, 1, 15};
        const std::size_t literalCount = 257 + in.take(5);
        const std::size_t distanceCount = 1 + in.take(5);
        const std::size_t lengthCount = 4 + in.take(4);
        std::array<std::uint8_t, lengthSymbols> lengthsOfLengths{};
        for (std::size_t i = 0; i < lengthCount; ++i) {
            if (!in.refill())
                return false;
            lengthsOfLengths[order[i]] = static_cast<std::uint8_t>(in.take(3));
        }
        Lengths lengths;
        return literalCount <= literalsAndLengths &&
               m_distances.set(lengthsOfLengths, lengthCodeSymbols) &&
               readLengths(in, std::span(lengths).first(literalCount + distanceCount)) &&
               set(lengths, literalCount, distanceCount);
    }

    /// Steps over everything up to the end of the block.
    bool skipSymbols(BitReader& in) const
    {
        while (in.refill()) {
            PrefixCode::Step step = m_literals.step(in.bits());
            in.skip(step.bits);
            if (step.kind == literal)
                continue;
            if (step.kind != repetition)
                return step.kind == blockEnd;
            step = m_distances.step(in.bits());
            in.skip(step.bits);
            if (step.kind != repetition)
                return false;
        }
        return false;
    }

private:
    bool set(const Lengths& lengths, std::size_t literalCount, std::size_t distanceCount)
    {
        const std::span all(lengths);
        return m_literals.set(all.first(literalCount), literalAndLengthSymbols) &&
               m_distances.set(all.subspan(literalCount, distanceCount), distanceSymbols);
    }

    /// In the code that is in m_distances for the moment.
    bool readLengths(BitReader& in, std::span<std::uint8_t> lengths) const
    {
        for (std::size_t at = 0; at < lengths.size();) {
            if (!in.refill())
                return false;
            const PrefixCode::Step step = m_distances.step(in.bits());
            in.skip(step.bits);
            if (step.kind < 16) {
                lengths[at++] = step.kind;
                continue;
            }
            if (step.kind >= lengthSymbols || (step.kind == 16 && at == 0))
                return false;
            const std::uint8_t repeated = step.kind == 16 ? lengths[at - 1] : std::uint8_t{0};
            const std::size_t times = step.kind == 16   ? 3 + in.take(2)
                                      : step.kind == 17 ? 3 + in.take(3)
                                                        : 11 + in.take(7);
            if (times > lengths.size() - at)
                return false;
            std::fill_n(lengths.begin() + static_cast<std::ptrdiff_t>(at), times, repeated);
            at += times;
        }
        return true;
    }

    PrefixCode m_literals;
    PrefixCode m_distances;
};

/// Of bytes as they are (RFC 1951, section 3.2.4).
bool skipStored(BitReader& in)
{
    in.moveTo((in.position() + 7) / 8);
    if (!in.refill())
        return false;
    const std::size_t length = in.take(16);
    const std::size_t complement = in.take(16);
    const std::size_t end = in.position() / 8 + length;
    if (length + complement != 0xffff)
        return false;
    in.moveTo(end);
    return true;
}

} // namespace

std::optional<LastBlock> lastBlockOf(std::span<const std::uint8_t> stream)
{
    BitReader in(stream);
    Codes codes;
    while (in.refill()) {
        const std::size_t start = in.position();
        const bool isLast = in.take(1) != 0;
        bool isSkipped = false;
        switch (in.take(2)) {
        case 0:
            isSkipped = skipStored(in);
            break;
        case 1:
            isSkipped = codes.setFixed() && codes.skipSymbols(in);
            break;
        case 2:
            isSkipped = codes.read(in) && codes.skipSymbols(in);
            break;
        }
        if (!isSkipped || in.position() > stream.size() * 8)
            return std::nullopt;
        if (isLast)
            return LastBlock{start, in.position()};
    }
    return std::nullopt;
}

} // namespace Png
