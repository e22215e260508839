#include "Media/Pictures/AreaScaler.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::ptrdiff_t channels = 4;
constexpr std::uint32_t wholeRow = 256;
/// Edges that lie closer together than this are the same: they come from divisions.
constexpr double tiny = 1e-6;

int roundedDown(double edge)
{
    return static_cast<int>(std::floor(edge + tiny));
}

int roundedUp(double edge)
{
    return static_cast<int>(std::ceil(edge - tiny));
}

void premultiply(unsigned char* row, std::ptrdiff_t width)
{
    for (unsigned char* pixel = row; pixel != row + width * channels; pixel += channels) {
        const unsigned alpha = pixel[3];
        if (alpha == 255)
            continue;
        for (int i = 0; i < 3; ++i)
            pixel[i] = static_cast<unsigned char>((pixel[i] * alpha + 127) / 255);
    }
}

} // namespace

AreaScaler::AreaScaler(const QRectF& part, QSize size, bool hasAlpha)
    : m_part(part)
    , m_step(part.height() / size.height())
    , m_hasAlpha(hasAlpha)
    , m_result(size, hasAlpha ? QImage::Format_RGBA8888_Premultiplied : QImage::Format_RGBX8888)
    , m_columns(columnSpans(part, size.width()))
    , m_firstColumn(m_columns.front().first)
    , m_sums(static_cast<std::size_t>((m_columns.back().last + 1 - m_firstColumn) * channels))
    , m_nextSourceRow(firstRow())
{
}

int AreaScaler::firstRow() const
{
    return roundedDown(m_part.top());
}

int AreaScaler::endRow() const
{
    return roundedUp(m_part.bottom());
}

AreaScaler::Span AreaScaler::spanOf(double from, double to)
{
    const int first = roundedDown(from);
    const int last = roundedUp(to) - 1;
    if (first == last)
        return {first, last, static_cast<float>(to - from), 0};
    return {first, last, static_cast<float>(first + 1 - from), static_cast<float>(to - last)};
}

std::vector<AreaScaler::Span> AreaScaler::columnSpans(const QRectF& part, int count) const
{
    std::vector<Span> spans;
    spans.reserve(static_cast<std::size_t>(count));
    const double step = part.width() / count;
    for (int i = 0; i < count; ++i)
        spans.push_back(spanOf(part.left() + i * step, part.left() + (i + 1) * step));
    return spans;
}

void AreaScaler::add(unsigned char* row)
{
    unsigned char* const wanted = row + m_firstColumn * channels;
    if (m_hasAlpha)
        premultiply(wanted, static_cast<std::ptrdiff_t>(m_sums.size()) / channels);
    const double top = m_nextSourceRow++;
    const double bottom = top + 1;
    while (m_nextResultRow < m_result.height()) {
        const double resultTop = m_part.top() + m_nextResultRow * m_step;
        const double resultBottom = resultTop + m_step;
        accumulate(wanted,
                   static_cast<float>(std::min(bottom, resultBottom) - std::max(top, resultTop)));
        if (bottom < resultBottom - tiny)
            return;
        finishRow();
        if (bottom < resultBottom + tiny)
            return;
    }
}

void AreaScaler::accumulate(const unsigned char* row, float share)
{
    const auto weight = static_cast<std::uint32_t>(std::lround(share * wholeRow));
    m_weight += weight;
    std::uint32_t* const sums = m_sums.data();
    const std::size_t count = m_sums.size();
    if (weight == wholeRow) { // nearly all rows: without a multiplication it is twice as fast
        for (std::size_t i = 0; i < count; ++i)
            sums[i] += std::uint32_t{row[i]} * wholeRow;
    } else {
        for (std::size_t i = 0; i < count; ++i)
            sums[i] += row[i] * weight;
    }
}

void AreaScaler::finishRow()
{
    unsigned char* result = m_result.scanLine(m_nextResultRow++);
    for (const Span& span : m_columns) {
        const std::uint32_t* column = m_sums.data() + (span.first - m_firstColumn) * channels;
        const int whole = std::max(0, span.last - span.first - 1);
        const float total = span.firstShare + span.lastShare + static_cast<float>(whole);
        const float scale = 1 / (total * static_cast<float>(m_weight));
        for (int channel = 0; channel < channels; ++channel) {
            double sum = static_cast<double>(column[channel]) * span.firstShare;
            const std::uint32_t* at = column + channel;
            for (int i = 0; i < whole; ++i)
                sum += *(at += channels);
            if (span.last > span.first)
                sum += static_cast<double>(at[channels]) * span.lastShare;
            *result++ = static_cast<unsigned char>(std::lround(sum * scale));
        }
    }
    std::fill(m_sums.begin(), m_sums.end(), 0);
    m_weight = 0;
}
