#include "LastBlock.h"

#include <limits>
#include <vector>

#define ZLIB_CONST // the input is const
#include <zlib.h>

namespace Png {

namespace {

constexpr std::size_t scratchSize = 256 << 10; // stays in the processor's cache
constexpr int withoutHeader = -MAX_WBITS;

// What z_stream::data_type says after inflate with Z_BLOCK.
constexpr int unusedBits = 7;
constexpr int inLastBlock = 64;
constexpr int atBlockEnd = 128;

class Inflater {
public:
    explicit Inflater(std::span<const std::uint8_t> stream)
    {
        m_state.next_in = stream.data();
        m_state.avail_in = static_cast<uInt>(stream.size());
        m_isReady = inflateInit2(&m_state, withoutHeader) == Z_OK;
    }
    ~Inflater()
    {
        if (m_isReady)
            inflateEnd(&m_state);
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// Reads up to the end of the next block, or to the end of `scratch`'s room for what it
    /// inflates to. False when it cannot go on.
    bool advance(std::span<std::uint8_t> scratch)
    {
        m_state.next_out = scratch.data();
        m_state.avail_out = static_cast<uInt>(scratch.size());
        return m_isReady && inflate(&m_state, Z_BLOCK) == Z_OK;
    }

    bool isAtBlockEnd() const { return (m_state.data_type & atBlockEnd) != 0; }
    bool isInLastBlock() const { return (m_state.data_type & inLastBlock) != 0; }

    std::size_t position() const // in bits, at a block's end
    {
        return std::size_t{m_state.total_in} * 8 -
               static_cast<std::size_t>(m_state.data_type & unusedBits);
    }

private:
    z_stream m_state{};
    bool m_isReady = false;
};

} // namespace

std::optional<LastBlock> lastBlockOf(std::span<const std::uint8_t> stream)
{
    if (stream.size() > std::numeric_limits<uInt>::max())
        return std::nullopt;
    std::vector<std::uint8_t> scratch(scratchSize);
    Inflater inflater(stream);
    std::size_t start = 0;
    while (inflater.advance(scratch)) {
        if (!inflater.isAtBlockEnd())
            continue;
        if (inflater.isInLastBlock())
            return LastBlock{start, inflater.position()};
        start = inflater.position();
    }
    return std::nullopt;
}

} // namespace Png
