#include "Movie/Core/Sprite.h"

#include "Movie/Core/Luminance.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int full = 256; // an opacity of 1

/// The sum of up to four pixels of a sprite.
struct Light {
    std::int32_t alpha = 0;
    std::int32_t red = 0;
    std::int32_t green = 0;
    std::int32_t blue = 0;

    void add(std::uint32_t pixel, int opacity)
    {
        const auto part = [&](int shift) {
            return static_cast<std::int32_t>(pixel >> shift & 0xff) * opacity / full;
        };
        alpha += part(24);
        red += part(16);
        green += part(8);
        blue += part(0);
    }
};

/// What shines through `light`, which is the sum of `count` pixels, and the light itself. `weighed`
/// is the light's share in 256ths, `zero` the value that stands for none.
std::uint8_t blend(std::uint8_t below, const Light& light, std::int32_t weighed, int zero,
                   int count)
{
    const int whole = 255 * count;
    const int through = ((below - zero) * (whole - light.alpha) * 2 + whole) / (2 * whole);
    const int value = zero + through + (weighed + 128 * count) / (256 * count);
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

class Drawing {
public:
    Drawing(Picture& picture, const Sprite& sprite, int x, int y, int opacity)
        : m_picture(picture)
        , m_sprite(sprite)
        , m_x(x)
        , m_y(y)
        , m_opacity(opacity)
    {
    }

    /// The block of two by two pixels at (x, y), both even.
    void drawBlock(int x, int y)
    {
        Light sum;
        for (int i = 0; i < 4; ++i) {
            const int column = x + i % 2;
            const int row = y + i / 2;
            Light light;
            light.add(pixelAt(column, row), m_opacity);
            if (light.alpha == 0)
                continue;
            sum.alpha += light.alpha;
            sum.red += light.red;
            sum.green += light.green;
            sum.blue += light.blue;
            std::uint8_t& luma = m_picture.lumaRow(row)[column];
            luma = blend(luma, light, Luminance::brightness(light.red, light.green, light.blue),
                         Luminance::floor, 1);
        }
        if (sum.alpha == 0)
            return;
        using enum Picture::Colour;
        std::uint8_t& blue = m_picture.colourRow(Blue, y / 2)[x / 2];
        blue = blend(blue, sum, Luminance::blueness(sum.red, sum.green, sum.blue),
                     Luminance::colourless, 4);
        std::uint8_t& red = m_picture.colourRow(Red, y / 2)[x / 2];
        red = blend(red, sum, Luminance::redness(sum.red, sum.green, sum.blue),
                    Luminance::colourless, 4);
    }

private:
    std::uint32_t pixelAt(int x, int y) const
    {
        const int column = x - m_x;
        const int row = y - m_y;
        if (column < 0 || row < 0 || column >= m_sprite.width || row >= m_sprite.height)
            return 0;
        return m_sprite
            .pixels[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_sprite.width) +
                    static_cast<std::size_t>(column)];
    }

    Picture& m_picture;
    const Sprite& m_sprite;
    int m_x;
    int m_y;
    int m_opacity;
};

} // namespace

void draw(Picture& picture, const Sprite& sprite, int x, int y, double opacity)
{
    const int left = std::max(x, 0) / 2 * 2;
    const int top = std::max(y, 0) / 2 * 2;
    const int right = std::min(x + sprite.width, picture.width());
    const int bottom = std::min(y + sprite.height, picture.height());
    Drawing drawing(picture, sprite, x, y, static_cast<int>(std::lround(opacity * full)));
    for (int row = top; row < bottom; row += 2) {
        for (int column = left; column < right; column += 2)
            drawing.drawBlock(column, row);
    }
}

Sprite makeRing(double scale)
{
    constexpr double radius = 18;   // points, to the middle of the line
    constexpr double halfLine = 2;  // points
    constexpr double halfEdge = .5; // pixels, over which it fades
    constexpr double red = 255;
    constexpr double green = 149;
    constexpr double blue = 0;

    const int reach = static_cast<int>(std::ceil((radius + halfLine) * scale + halfEdge));
    Sprite ring{2 * reach, 2 * reach, {}};
    for (int y = 0; y < ring.height; ++y) {
        for (int x = 0; x < ring.width; ++x) {
            const double distance = std::hypot(x + .5 - reach, y + .5 - reach);
            const double depth = halfLine * scale - std::abs(distance - radius * scale);
            const double alpha = std::clamp(depth + halfEdge, 0.0, 1.0) * .9;
            const auto part = [&](double value, int shift) {
                return static_cast<std::uint32_t>(std::lround(value * alpha)) << shift;
            };
            ring.pixels.push_back(part(255, 24) | part(red, 16) | part(green, 8) | part(blue, 0));
        }
    }
    return ring;
}
