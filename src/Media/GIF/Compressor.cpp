#include "Media/GIF/Compressor.h"

#include <algorithm>
#include <array>

using namespace GIF;

namespace {

constexpr int mostBits = 12;
constexpr unsigned codeCount = 1U << mostBits;
constexpr int slotBits = 14;
constexpr std::size_t slotCount = std::size_t{1} << slotBits;
constexpr int eraShift = 20; // above a code and a number
constexpr std::uint32_t mostEras = (1U << (32 - eraShift)) - 1;
constexpr std::uint16_t none = 0xffff;
/// So many strings are followed at a time.
constexpr std::size_t mostFollowed = 4;
/// Once there are all codes that there can be, it is looked so many codes apart how well they fit.
constexpr int stretch = 512;

std::size_t hashOf(std::uint32_t key)
{
    return key * 0x9e3779b1U >> (32 - slotBits);
}

} // namespace

/// Bits, the lowest first, in blocks of up to 255 bytes that begin with their length.
class Compressor::Output {
public:
    explicit Output(std::vector<std::uint8_t>& file)
        : m_file(file)
    {
    }

    void put(unsigned code, int width)
    {
        m_bits |= code << m_count;
        m_count += width;
        for (; m_count >= 8; m_count -= 8, m_bits >>= 8)
            putByte(static_cast<std::uint8_t>(m_bits));
    }

    void finish()
    {
        if (m_count > 0)
            putByte(static_cast<std::uint8_t>(m_bits));
        closeBlock();
        m_file.push_back(0);
    }

private:
    void putByte(std::uint8_t byte)
    {
        if (m_inBlock == 0)
            m_file.push_back(0); // its length, to be filled in
        m_file.push_back(byte);
        if (++m_inBlock == 255)
            closeBlock();
    }

    void closeBlock()
    {
        if (m_inBlock > 0)
            *(m_file.end() - m_inBlock - 1) = static_cast<std::uint8_t>(m_inBlock);
        m_inBlock = 0;
    }

    std::vector<std::uint8_t>& m_file;
    unsigned m_bits = 0;
    int m_count = 0;
    int m_inBlock = 0;
};

Compressor::Compressor()
    : m_slots(slotCount)
{
}

void Compressor::forget()
{
    if (m_era++ == mostEras) {
        std::fill(m_slots.begin(), m_slots.end(), Slot{});
        m_era = 1;
    }
    m_next = m_firstFree;
}

Compressor::Code Compressor::longer(Code code, std::uint8_t number) const
{
    const std::uint32_t key = m_era << eraShift | static_cast<std::uint32_t>(code) << 8 | number;
    for (std::size_t i = hashOf(key);; i = (i + 1) % slotCount) {
        const Slot& slot = m_slots[i];
        if (slot.key == key)
            return slot.code;
        if (slot.key >> eraShift != m_era)
            return none;
    }
}

void Compressor::add(Code code, std::uint8_t number)
{
    const std::uint32_t key = m_era << eraShift | static_cast<std::uint32_t>(code) << 8 | number;
    std::size_t i = hashOf(key);
    while (m_slots[i].key >> eraShift == m_era)
        i = (i + 1) % slotCount;
    m_slots[i] = {key, m_next++};
}

std::size_t Compressor::longestFrom(std::span<const Choice> pixels, std::uint8_t first, Code& code)
{
    std::array<Code, mostFollowed> codes{first};
    std::array<Code, mostFollowed> next{};
    std::size_t count = 1, length = 0;
    while (count > 0) {
        code = codes[0];
        if (++length == pixels.size())
            break;
        const Choice choice = pixels[length];
        std::size_t nextCount = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const Code one = longer(codes[i], choice.first);
            if (one != none && nextCount < mostFollowed)
                next[nextCount++] = one;
            if (choice.second == choice.first)
                continue;
            const Code other = longer(codes[i], choice.second);
            if (other != none && nextCount < mostFollowed)
                next[nextCount++] = other;
        }
        codes = next;
        count = nextCount;
    }
    return length;
}

void Compressor::compress(std::span<const Choice> pixels, int bits, std::vector<std::uint8_t>& file)
{
    const Code clear = static_cast<Code>(1U << bits);
    m_firstFree = static_cast<Code>(clear + 2);
    file.push_back(static_cast<std::uint8_t>(bits));
    Output output(file);
    int width = bits + 1;
    output.put(clear, width);
    forget();

    std::uint8_t first = pixels[0].first;
    int codesInStretch = 0;
    std::size_t pixelsInStretch = 0, bestStretch = 0;
    while (!pixels.empty()) {
        Code code = first;
        const std::size_t length = longestFrom(pixels, first, code);
        output.put(code, width);
        pixels = pixels.subspan(length);
        if (!pixels.empty())
            first = pixels[0].first;
        if (m_next < codeCount) {
            if (m_next == 1U << width)
                ++width;
            if (!pixels.empty())
                add(code, first);
            bestStretch = 0;
            codesInStretch = 0;
            pixelsInStretch = 0;
            continue;
        }
        pixelsInStretch += length;
        if (++codesInStretch < stretch)
            continue;
        if (pixelsInStretch * 10 < bestStretch * 9) {
            output.put(clear, width);
            forget();
            width = bits + 1;
        }
        bestStretch = std::max(bestStretch, pixelsInStretch);
        codesInStretch = 0;
        pixelsInStretch = 0;
    }
    output.put(clear + 1U, width);
    output.finish();
}
