#include "Editor/AnnotationShadow.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr double offset = 1;        // points, downwards
constexpr double blurDeviation = 1; // points: half of the blur's radius
constexpr double opacity = 0.45;
constexpr double overhang = 0.5; // of the box's height: accents and slants that leave the box
constexpr double reachedDeviations = 3;

/// The weights of a blur from its middle on; all together, with those of the other side, make 1.
std::vector<float> gaussian(double deviation)
{
    const auto reach = static_cast<std::size_t>(std::ceil(deviation * reachedDeviations));
    std::vector<float> weights(reach + 1);
    float sum = 0;
    for (std::size_t i = 0; i <= reach; ++i) {
        const double distance = static_cast<double>(i) / std::max(deviation, 1e-3);
        weights[i] = static_cast<float>(std::exp(-distance * distance / 2));
        sum += i == 0 ? weights[i] : 2 * weights[i];
    }
    for (float& weight : weights)
        weight /= sum;
    return weights;
}

/// Blurs `count` rows of `length` values, and writes them as columns.
void blurAndTurn(const std::vector<float>& from, std::vector<float>& to, int length, int count,
                 const std::vector<float>& weights)
{
    const int reach = static_cast<int>(weights.size()) - 1;
    std::vector<float> padded(static_cast<std::size_t>(length + 2 * reach));
    for (int row = 0; row < count; ++row) {
        std::copy_n(from.begin() + std::ptrdiff_t{row} * length, length, padded.begin() + reach);
        for (int i = 0; i < length; ++i) {
            const float* const middle = padded.data() + i + reach;
            float sum = weights[0] * *middle;
            for (int distance = 1; distance <= reach; ++distance)
                sum += weights[static_cast<std::size_t>(distance)] *
                       (middle[-distance] + middle[distance]);
            to[static_cast<std::size_t>(i) * static_cast<std::size_t>(count) +
               static_cast<std::size_t>(row)] = sum;
        }
    }
}

QRgb* rowOf(QImage& image, int y)
{
    return reinterpret_cast<QRgb*>(image.scanLine(y)); // aligned: 32 bits a pixel
}

/// Makes a premultiplied image the shadow of what is on it: black, blurred.
void makeShadow(QImage& image, double deviation)
{
    const std::vector<float> weights = gaussian(deviation);
    const int width = image.width();
    const int height = image.height();
    std::vector<float> values(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::vector<float> turned(values.size());
    for (int y = 0; y < height; ++y) {
        const QRgb* const row = rowOf(image, y);
        std::transform(row, row + width, values.begin() + std::ptrdiff_t{y} * width,
                       [](QRgb pixel) { return static_cast<float>(qAlpha(pixel) * opacity); });
    }
    blurAndTurn(values, turned, width, height, weights);
    blurAndTurn(turned, values, height, width, weights);
    for (int y = 0; y < height; ++y) {
        std::transform(values.begin() + std::ptrdiff_t{y} * width,
                       values.begin() + std::ptrdiff_t{y + 1} * width, rowOf(image, y),
                       [](float alpha) { return static_cast<QRgb>(std::lround(alpha)) << 24; });
    }
}

} // namespace

namespace AnnotationShadow {

double reach(double boxHeight)
{
    return boxHeight * overhang + reachedDeviations * blurDeviation + offset;
}

void draw(QPainter& painter, const QRectF& box, double lineHeight,
          const AnnotationDevice::DrawText& drawText)
{
    // In the device's pixels, so that the shadow is as fine as the text.
    const double deviation = blurDeviation * AnnotationDevice::scale(painter);
    const int blur = static_cast<int>(std::ceil(reachedDeviations * deviation)) + 1;
    const double margin = reach(box.height());
    AnnotationDevice::Sheet sheet =
        AnnotationDevice::textSheet(painter, box.adjusted(-margin, -margin, margin, margin),
                                    lineHeight, offset, blur, drawText);
    if (sheet.pixels.isNull())
        return;
    makeShadow(sheet.pixels, deviation);
    AnnotationDevice::put(painter, sheet);
}

} // namespace AnnotationShadow
