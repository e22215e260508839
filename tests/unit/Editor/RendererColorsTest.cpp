// Every kind of mark in every colour and size that the toolbar offers.

#include "Editor/AnnotationRenderer.h"

#include "unit/Editor/Shapes.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace {

using Kind = AnnotationKind;

constexpr Kind kinds[] = {Kind::arrow,     Kind::line, Kind::rect,    Kind::ellipse, Kind::freehand,
                          Kind::highlight, Kind::text, Kind::counter, Kind::redact};

/// A line width and the size of text that goes with it.
constexpr std::pair<double, double> sizes[] = {{2, 14}, {4, 19}, {7, 26}};

Annotation mark(Kind kind, std::pair<double, double> size, const char* color)
{
    Annotation result = markOf(kind, {25, 20}, {95, 60}, size.first, color);
    switch (kind) {
    case Kind::freehand:
    case Kind::highlight:
        result.path = QList<Geometry::Point>{{25, 20}, {60, 55}, {95, 30}};
        break;
    case Kind::text:
        result.text = QStringLiteral("Label");
        result.fontSize = size.second;
        break;
    case Kind::counter:
        result.number = 7;
        break;
    case Kind::arrow:
    case Kind::line:
    case Kind::rect:
    case Kind::ellipse:
    case Kind::redact:
        break;
    }
    return result;
}

std::array<int, 3> channels(const QImage& image, int x, int y)
{
    const QRgb pixel = image.pixel(x, y);
    return {qRed(pixel), qGreen(pixel), qBlue(pixel)};
}

} // namespace

TEST(MarkColors, EveryKindAndSizeIsDrawnInEachOfThem)
{
    constexpr std::pair<const char*, std::array<int, 3>> colors[] = {
        {"#FF3B30", {255, 59, 48}}, {"#FF9500", {255, 149, 0}},  {"#FFCC00", {255, 204, 0}},
        {"#34C759", {52, 199, 89}}, {"#0A84FF", {10, 132, 255}}, {"#BF5AF2", {191, 90, 242}},
        {"#000000", {0, 0, 0}},     {"#FFFFFF", {255, 255, 255}}};
    const BaseImage base = plainPicture({120, 80}, 1);
    for (const Kind kind : kinds) {
        int smaller = 0;
        for (const auto& size : sizes) {
            SCOPED_TRACE(testing::Message()
                         << "kind " << static_cast<int>(kind) << ", width " << size.first);
            const auto drawn = [&](const char* color) {
                return AnnotationRenderer::flattened(base, {mark(kind, size, color)});
            };
            // Whatever a mark does with its colour, it does in proportion: what black and white
            // make of a pixel says what any other colour does.
            const QImage black = drawn("#000000");
            const QImage white = drawn("#FFFFFF");
            int colored = 0;
            bool isOpaque = false; // somewhere
            for (const auto& [name, values] : colors) {
                const QImage image = drawn(name);
                colored = 0;
                for (int y = 0; y < image.height(); ++y) {
                    for (int x = 0; x < image.width(); ++x) {
                        const auto low = channels(black, x, y);
                        const auto high = channels(white, x, y);
                        const auto seen = channels(image, x, y);
                        colored += high[0] - low[0] > 60 ? 1 : 0;
                        isOpaque = isOpaque || (low == std::array{0, 0, 0} &&
                                                high == std::array{255, 255, 255});
                        for (std::size_t c = 0; c < seen.size(); ++c) {
                            const double wanted = low[c] + (high[c] - low[c]) * values[c] / 255.0;
                            ASSERT_NEAR(seen[c], wanted, 2) << name << " at " << x << ", " << y;
                        }
                    }
                }
            }
            if (kind == Kind::redact) { // has no colour, and no size
                EXPECT_EQ(colored, 0);
                continue;
            }
            EXPECT_EQ(isOpaque, kind != Kind::highlight);
            EXPECT_GT(colored, smaller);
            EXPECT_GT(colored, 50);
            smaller = colored;
        }
    }
}
