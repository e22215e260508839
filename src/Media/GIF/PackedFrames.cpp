#include "Media/GIF/PackedFrames.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

using namespace GIF;

namespace {

/// What a byte begins. Of the first three its lower bits are part of the content.
enum Token : std::uint8_t {
    recent = 0x00,   // 6 bits: the place among recent colours
    near = 0x40,     // twice 3 bits: green and red less the left pixel's; blue changes as red does
    like = 0x80,     // 6 bits: green; a byte: red and blue less green's change
    left = 0xc0,     // 5 bits: so many pixels, less one, are as the one to the left
    same = 0xe0,     // so many, less one, are as before
    longLeft = 0xfd, // three bytes: how many
    longSame = 0xfe, // three bytes: how many
    all = 0xff,      // three bytes: red, green, blue
};
constexpr std::size_t mostLeft = same - left;
constexpr std::size_t mostSame = longLeft - same;

/// Colours that were used lately, by a number of six bits.
class RecentColours {
public:
    static std::uint8_t placeOf(Pixel colour)
    {
        return static_cast<std::uint8_t>((colour & 0xffffff) * 0x9e3779b1U >> 26);
    }
    Pixel& at(std::uint8_t place) { return m_colours[place]; }

private:
    std::array<Pixel, 64> m_colours{};
};

/// The colour that differs from `base` by so much, channel by channel and modulo 256.
Pixel moved(Pixel base, int r, int g, int b)
{
    return opaque((red(base) + r) & 255, (green(base) + g) & 255, (blue(base) + b) & 255);
}

/// The shortest way from one channel's value to another's, modulo 256.
int step(int from, int to)
{
    return static_cast<std::int8_t>(to - from);
}

} // namespace

/// Writes the pixels of one frame.
class PackedFrames::Writer {
public:
    explicit Writer(std::vector<std::uint8_t>& bytes)
        : m_bytes(bytes)
    {
    }

    void putSame(std::size_t count)
    {
        if (count > mostSame)
            putLong(longSame, count);
        else
            m_bytes.push_back(static_cast<std::uint8_t>(same + count - 1));
    }

    void putLeft(std::size_t count)
    {
        if (count > mostLeft)
            putLong(longLeft, count);
        else
            m_bytes.push_back(static_cast<std::uint8_t>(left + count - 1));
    }

    void put(Pixel pixel)
    {
        const std::uint8_t place = RecentColours::placeOf(pixel);
        if (m_recent.at(place) == pixel)
            m_bytes.push_back(recent | place);
        else
            putNew(pixel);
        m_recent.at(place) = pixel;
        m_left = pixel;
    }

    Pixel leftPixel() const { return m_left; }

private:
    void putNew(Pixel pixel)
    {
        const int r = step(red(m_left), red(pixel));
        const int g = step(green(m_left), green(pixel));
        const int b = step(blue(m_left), blue(pixel));
        if (r == b && r >= -4 && r < 4 && g >= -4 && g < 4) {
            m_bytes.push_back(static_cast<std::uint8_t>(near | (g + 4) << 3 | (r + 4)));
        } else if (g >= -32 && g < 32 && r - g >= -8 && r - g < 8 && b - g >= -8 && b - g < 8) {
            m_bytes.push_back(static_cast<std::uint8_t>(like | (g + 32)));
            m_bytes.push_back(static_cast<std::uint8_t>((r - g + 8) << 4 | (b - g + 8)));
        } else {
            m_bytes.push_back(all);
            putNumber(pixel & 0xffffff);
        }
    }

    void putLong(Token token, std::size_t count)
    {
        m_bytes.push_back(token);
        putNumber(static_cast<std::uint32_t>(count));
    }

    void putNumber(std::uint32_t number)
    {
        for (const int shift : {16, 8, 0})
            m_bytes.push_back(static_cast<std::uint8_t>(number >> shift));
    }

    std::vector<std::uint8_t>& m_bytes;
    RecentColours m_recent;
    Pixel m_left = opaque(0, 0, 0);
};

PackedFrames::PackedFrames(std::size_t pixels)
    : m_last(pixels)
    , m_since(pixels, before)
{
}

void PackedFrames::change(std::size_t begin, std::size_t end, Pixel pixel)
{
    const auto now = static_cast<std::uint32_t>(m_frames.size());
    for (std::size_t i = begin; i < end;) {
        const Pixel old = m_last[i];
        std::uint32_t times = 0;
        for (; i < end && m_last[i] == old; ++i) {
            times += m_since[i] == before ? 0 : now - m_since[i];
            m_last[i] = pixel;
            m_since[i] = now;
        }
        if (times > 0)
            m_gone.add(old, times);
    }
}

ColourCount PackedFrames::colours() const
{
    ColourCount colours = m_gone;
    const auto end = static_cast<std::uint32_t>(m_frames.size());
    for (std::size_t i = 0; i < m_last.size();) {
        const Pixel colour = m_last[i];
        std::uint32_t times = 0;
        for (; i < m_last.size() && m_last[i] == colour; ++i)
            times += m_since[i] == before ? 0 : end - m_since[i];
        if (times > 0)
            colours.add(colour, times);
    }
    return colours;
}

void PackedFrames::finishFrame()
{
    m_frames.emplace_back(m_bytes.begin(), m_bytes.end());
    m_size += m_bytes.size();
    m_bytes.clear();
}

void PackedFrames::addRepetition()
{
    Writer(m_bytes).putSame(m_last.size());
    finishFrame();
}

void PackedFrames::add(std::span<const Pixel> frame)
{
    Writer writer(m_bytes);
    const std::size_t count = frame.size();
    for (std::size_t i = 0; i < count;) {
        std::size_t end = i;
        if (m_hasLast) {
            while (end < count && frame[end] == m_last[end])
                ++end;
        }
        if (end > i) {
            writer.putSame(end - i);
            i = end;
            continue;
        }
        const Pixel pixel = frame[i];
        while (end < count && frame[end] == pixel &&
               (end == i || !m_hasLast || pixel != m_last[end]))
            ++end;
        change(i, end, pixel);
        if (pixel != writer.leftPixel()) {
            writer.put(pixel);
            ++i;
        }
        if (end > i)
            writer.putLeft(end - i);
        i = end;
    }
    m_hasLast = true;
    finishFrame();
}

void PackedFrames::clear()
{
    m_frames.clear();
    m_size = 0;
    std::fill(m_since.begin(), m_since.end(), before);
    m_gone = {};
}

std::vector<Span> PackedFrames::Reader::read(std::vector<Pixel>& frame)
{
    const std::uint8_t* at = m_frames.m_frames[m_next++].data();
    const auto number = [&at] {
        const auto value = static_cast<std::uint32_t>(at[0] << 16 | at[1] << 8 | at[2]);
        at += 3;
        return value;
    };
    RecentColours colours;
    Pixel pixel = opaque(0, 0, 0);
    std::vector<Span> changed;
    for (std::size_t i = 0; i < frame.size();) {
        const std::uint8_t token = *at++;
        std::size_t count = 1;
        if (token >= same && token != longLeft && token != all) {
            i += token == longSame ? number() : std::size_t{token} - same + 1;
            continue;
        }
        if (token == longLeft) {
            count = number();
        } else if (token == all) {
            pixel = 0xff000000 | number();
        } else if (token >= left) {
            count = std::size_t{token} - left + 1;
        } else if (token >= like) {
            const int g = (token & 63) - 32;
            const int both = *at++;
            pixel = moved(pixel, g + (both >> 4) - 8, g, g + (both & 15) - 8);
        } else if (token >= near) {
            const int r = (token & 7) - 4;
            pixel = moved(pixel, r, (token >> 3 & 7) - 4, r);
        } else {
            pixel = colours.at(token);
        }
        colours.at(RecentColours::placeOf(pixel)) = pixel;
        std::fill_n(frame.begin() + static_cast<std::ptrdiff_t>(i), count, pixel);
        if (!changed.empty() && changed.back().end == i)
            changed.back().end += count;
        else
            changed.push_back({i, i + count});
        i += count;
    }
    return changed;
}
