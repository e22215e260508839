#include "Media/GIF/FrameMapping.h"

#include <algorithm>

using namespace GIF;

FrameMapping::FrameMapping(int width, int height)
    : m_width(width)
    , m_height(height)
    , m_wanted(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    , m_shown(m_wanted.size())
    , m_indices(m_wanted.size())
    , m_isNew(m_wanted.size())
{
}

void FrameMapping::setPalette(const Palette& palette, int tolerance)
{
    m_search.emplace(palette);
    m_tolerance = tolerance;
    std::fill(m_indices.begin(), m_indices.end(), transparent());
}

IndexedFrame FrameMapping::next(PackedFrames::Reader& frames)
{
    std::fill(m_isNew.begin(), m_isNew.end(), std::uint8_t{0});
    for (const Span span : frames.read(m_wanted))
        map(span);
    IndexedFrame frame = changedPart();
    m_isFirst = false;
    return frame;
}

void FrameMapping::map(Span span)
{
    for (std::size_t i = span.begin; i < span.end; ++i) {
        const Pixel wanted = m_wanted[i];
        const int index = m_search->nearest(wanted);
        const Pixel best = palette()[static_cast<std::size_t>(index)];
        if (!m_isFirst && distance(m_shown[i], wanted) <= distance(best, wanted) + m_tolerance)
            continue;
        m_shown[i] = best;
        m_indices[i] = static_cast<std::uint8_t>(index);
        m_isNew[i] = 1;
    }
}

IndexedFrame FrameMapping::changedPart() const
{
    int left = m_width, right = 0, top = m_height, bottom = 0;
    const auto width = static_cast<std::size_t>(m_width);
    for (int y = 0; y < m_height; ++y) {
        const auto begin = m_isNew.begin() + static_cast<std::ptrdiff_t>(width) * y;
        const auto end = begin + m_width;
        const auto first = std::find(begin, end, std::uint8_t{1});
        if (first == end)
            continue;
        left = std::min(left, static_cast<int>(first - begin));
        for (int x = m_width; x > right; --x) {
            if (begin[x - 1] != 0) {
                right = x;
                break;
            }
        }
        top = std::min(top, y);
        bottom = y + 1;
    }
    if (top >= bottom)
        return {0, 0, 1, 1, {{transparent(), m_indices[0]}}};
    IndexedFrame frame{left, top, right - left, bottom - top, {}};
    frame.pixels.reserve(static_cast<std::size_t>(frame.width) *
                         static_cast<std::size_t>(frame.height));
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            const std::size_t i = width * static_cast<std::size_t>(y) + static_cast<std::size_t>(x);
            frame.pixels.push_back({m_isNew[i] != 0 ? m_indices[i] : transparent(), m_indices[i]});
        }
    }
    return frame;
}
