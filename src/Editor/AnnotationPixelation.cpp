#include "Editor/AnnotationPixelation.h"

#include "Editor/AnnotationDevice.h"

#include <QPainter>

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
    // Two channels at a time, which have 16 bits each: enough for so many pixels.
    constexpr int most = 256;
    constexpr QRgb pair = 0x00FF00FF;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        for (int first = columns[i].first; first < columns[i].end; first += most) {
            const int end = std::min(first + most, columns[i].end);
            QRgb even = 0;
            QRgb odd = 0;
            for (int x = first; x < end; ++x) {
                even += row[x] & pair;
                odd += row[x] >> 8 & pair;
            }
            sums[i][0] += even & 0xFFFF;
            sums[i][1] += odd & 0xFFFF;
            sums[i][2] += even >> 16;
            sums[i][3] += odd >> 16;
        }
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

/// Which of `count` pixels between two edges is seen at each of the device's pixels of a range.
std::vector<int> pixelsAt(int begin, int end, double firstEdge, double lastEdge, int count)
{
    // Middles of the device's pixels may lie on an edge: which side counts must not be up to the
    // last bit.
    constexpr double tolerance = 1e-6;
    const double factor = count / (lastEdge - firstEdge);
    std::vector<int> result;
    result.reserve(static_cast<std::size_t>(end - begin));
    for (int i = begin; i < end; ++i) {
        const double pixel = std::floor((i + 0.5 - firstEdge) * factor + tolerance);
        result.push_back(static_cast<int>(std::clamp(pixel, 0.0, count - 1.0)));
    }
    return result;
}

/// The device's pixels whose middles are in a rectangle.
QRect pixelsIn(const QRectF& rect)
{
    constexpr double tolerance = 1e-6;
    const auto edge = [](double place) {
        return static_cast<int>(std::floor(place + 0.5 + tolerance));
    };
    return {QPoint(edge(rect.left()), edge(rect.top())),
            QPoint(edge(rect.right()) - 1, edge(rect.bottom()) - 1)};
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

void draw(QPainter& painter, const QRectF& place, const QImage& pixels)
{
    const QTransform toDevice = painter.deviceTransform();
    const QRectF onDevice = toDevice.mapRect(place);
    const QRect area = pixelsIn(onDevice) & AnnotationDevice::reachable(painter);
    if (area.isEmpty())
        return;
    QImage shown(area.size(), pixels.format());
    if (shown.isNull())
        return;
    const auto columns = pixelsAt(area.left(), area.left() + area.width(), onDevice.left(),
                                  onDevice.right(), pixels.width());
    const auto rows = pixelsAt(area.top(), area.top() + area.height(), onDevice.top(),
                               onDevice.bottom(), pixels.height());
    for (std::size_t y = 0; y < rows.size(); ++y) {
        uchar* const to = shown.scanLine(static_cast<int>(y));
        if (y > 0 && rows[y] == rows[y - 1]) {
            std::copy_n(shown.constScanLine(static_cast<int>(y) - 1), shown.bytesPerLine(), to);
            continue;
        }
        const auto* const from = reinterpret_cast<const QRgb*>(pixels.constScanLine(rows[y]));
        std::transform(columns.begin(), columns.end(), reinterpret_cast<QRgb*>(to),
                       [from](int column) { return from[column]; });
    }
    AnnotationDevice::put(painter, {shown, area.topLeft()});
}

} // namespace AnnotationPixelation
