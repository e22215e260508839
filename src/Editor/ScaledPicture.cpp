#include "Editor/ScaledPicture.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

/// From here on a picture's pixels are shown as squares; below, they are mixed at their edges.
constexpr double squarePixels = 2;

constexpr unsigned whole = 256;

/// A new pixel along one axis: `first` and its neighbour, which has `share` of 256.
struct Mixture {
    int first;
    int second;
    unsigned share;
};

std::vector<Mixture> mixtures(int begin, int count, int oldLength, int newLength)
{
    const double factor = static_cast<double>(newLength) / oldLength;
    std::vector<Mixture> result(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const double middle = (begin + i + 0.5) / factor;
        Mixture& mixture = result[static_cast<std::size_t>(i)];
        if (factor >= squarePixels) {
            const int pixel = std::min(static_cast<int>(middle), oldLength - 1);
            mixture = {pixel, pixel, 0};
            continue;
        }
        const double place = std::clamp(middle - 0.5, 0.0, oldLength - 1.0);
        const int first = static_cast<int>(place);
        mixture = {first, std::min(first + 1, oldLength - 1),
                   static_cast<unsigned>(std::lround((place - first) * whole))};
    }
    return result;
}

QRgb mixed(QRgb a, QRgb b, unsigned share)
{
    // Two channels at a time, which have 16 bits each for products.
    constexpr QRgb pair = 0x00FF00FF;
    constexpr QRgb half = 0x00800080;
    const QRgb even = ((a & pair) * (whole - share) + (b & pair) * share + half) >> 8 & pair;
    const QRgb odd = ((a >> 8 & pair) * (whole - share) + (b >> 8 & pair) * share + half) & ~pair;
    return even | odd;
}

} // namespace

void ScaledPicture::setSize(QSize size)
{
    if (size == m_size)
        return;
    m_size = size;
    m_reduced = {};
}

QImage ScaledPicture::part(const QRect& part)
{
    if (m_picture.isNull() || m_size == m_picture.size())
        return m_picture.copy(part);
    if (m_size.width() > m_picture.width() && m_size.height() > m_picture.height())
        return enlarged(part);
    if (m_reduced.isNull())
        m_reduced = m_picture.scaled(m_size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return m_reduced.copy(part);
}

QImage ScaledPicture::enlarged(const QRect& part) const
{
    QImage result(part.size(), m_picture.format());
    if (result.isNull())
        return result;
    const auto columns = mixtures(part.left(), part.width(), m_picture.width(), m_size.width());
    const auto rows = mixtures(part.top(), part.height(), m_picture.height(), m_size.height());
    // Qt gives bytes; the formats are 32 bits a pixel, aligned.
    const auto rowOf = [this](int y) {
        return reinterpret_cast<const QRgb*>(m_picture.constScanLine(y));
    };
    for (int y = 0; y < part.height(); ++y) {
        const Mixture& row = rows[static_cast<std::size_t>(y)];
        const QRgb* const first = rowOf(row.first);
        const QRgb* const second = rowOf(row.second);
        auto* const to = reinterpret_cast<QRgb*>(result.scanLine(y));
        std::transform(columns.begin(), columns.end(), to, [&](const Mixture& column) {
            const QRgb upper = mixed(first[column.first], first[column.second], column.share);
            const QRgb lower = mixed(second[column.first], second[column.second], column.share);
            return mixed(upper, lower, row.share);
        });
    }
    return result;
}
