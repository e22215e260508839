#include "Editor/AnnotationPixelation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace {

/// A run of pixels along one axis: those of one block.
struct Run {
    int first;
    int end;
};

/// The blocks along one axis from `start` on, `length` long, both in pixels and any numbers, on a
/// picture that is `extent` pixels long. A pixel is in the block that its middle is in.
std::vector<Run> runsAlong(double start, double length, double blockSize, int extent)
{
    // Sizes are computed from points: what lies within this of an edge of a pixel is that edge.
    constexpr double tolerance = 1e-6;
    const auto extentInPixels = static_cast<double>(extent);
    const int first =
        static_cast<int>(std::clamp(std::floor(start + tolerance), 0.0, extentInPixels));
    const int end =
        static_cast<int>(std::clamp(std::ceil(start + length - tolerance), 0.0, extentInPixels));
    std::vector<Run> runs;
    double lastBlock = -1;
    const double largestBlock = std::max(std::ceil(length / blockSize - tolerance) - 1, 0.0);
    for (int pixel = first; pixel < end; ++pixel) {
        const double block =
            std::clamp(std::floor((pixel + 0.5 - start) / blockSize), 0.0, largestBlock);
        if (block != lastBlock)
            runs.push_back({pixel, pixel});
        ++runs.back().end;
        lastBlock = block;
    }
    return runs;
}

using Sums = std::array<std::uint64_t, 4>;

/// Adds the pixels of one row to the sums of their blocks.
void addRow(const QRgb* row, const std::vector<Run>& columns, std::vector<Sums>& sums)
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        std::array<std::uint32_t, 4> sum{}; // of one row, which is shorter than 2^24 pixels
        for (int x = columns[i].first; x < columns[i].end; ++x) {
            for (std::size_t channel = 0; channel < sum.size(); ++channel)
                sum[channel] += row[x] >> 8 * channel & 0xFF;
        }
        for (std::size_t channel = 0; channel < sum.size(); ++channel)
            sums[i][channel] += sum[channel];
    }
}

/// The mean colour, opaque, so that nothing below shows through it; nothing where the picture has
/// nothing. `sums` are of premultiplied pixels.
QRgb mean(const Sums& sums)
{
    const std::uint64_t alpha = sums[3];
    if (alpha == 0)
        return 0;
    QRgb pixel = 0xFF000000;
    for (std::size_t channel = 0; channel < 3; ++channel)
        pixel |= static_cast<QRgb>((sums[channel] * 0xFF + alpha / 2) / alpha) << 8 * channel;
    return pixel;
}

} // namespace

namespace AnnotationPixelation {

Blocks pixelated(const BaseImage& base, const Geometry::Rect& rect, double blockSize)
{
    if (base.pixels.isNull())
        return {};
    const double scaleX = base.pixelsPerPointX();
    const double scaleY = base.pixelsPerPointY();
    const std::vector<Run> columns =
        runsAlong(rect.x * scaleX, rect.width * scaleX, blockSize * scaleX, base.pixels.width());
    // From the bottom up, as the blocks are counted.
    const std::vector<Run> rows =
        runsAlong(rect.y * scaleY, rect.height * scaleY, blockSize * scaleY, base.pixels.height());
    if (columns.empty() || rows.empty())
        return {};

    const bool isPlain = base.pixels.format() == QImage::Format_RGB32 ||
                         base.pixels.format() == QImage::Format_ARGB32_Premultiplied;
    const QImage source =
        isPlain ? base.pixels : base.pixels.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const int left = columns.front().first;
    const int width = columns.back().end - left;
    const int top = source.height() - rows.back().end;
    const int height = rows.back().end - rows.front().first;
    QImage result(width, height, source.format());
    if (result.isNull())
        return {};

    for (const Run& row : rows) {
        // The block's rows from the picture's top.
        const int first = source.height() - row.end;
        const int end = source.height() - row.first;
        std::vector<Sums> sums(columns.size());
        for (int y = first; y < end; ++y) {
            // Qt gives bytes; the formats are 32 bits a pixel, aligned.
            addRow(reinterpret_cast<const QRgb*>(source.constScanLine(y)), columns, sums);
        }
        auto* const firstRow = reinterpret_cast<QRgb*>(result.scanLine(first - top));
        for (std::size_t i = 0; i < columns.size(); ++i) {
            std::fill(firstRow + (columns[i].first - left), firstRow + (columns[i].end - left),
                      mean(sums[i]));
        }
        for (int y = first + 1; y < end; ++y)
            std::copy_n(firstRow, width, reinterpret_cast<QRgb*>(result.scanLine(y - top)));
    }
    return {result, {left, top}};
}

} // namespace AnnotationPixelation
