#pragma once

#include <cstdint>
#include <cstdlib>

namespace GIF {

/// Red, green and blue, eight bits each, blue lowest; above them what stands in RGB32.
using Pixel = std::uint32_t;

constexpr int red(Pixel pixel)
{
    return static_cast<int>(pixel >> 16 & 255);
}
constexpr int green(Pixel pixel)
{
    return static_cast<int>(pixel >> 8 & 255);
}
constexpr int blue(Pixel pixel)
{
    return static_cast<int>(pixel & 255);
}

constexpr Pixel opaque(int red, int green, int blue)
{
    return 0xff000000 | static_cast<Pixel>(red) << 16 | static_cast<Pixel>(green) << 8 |
           static_cast<Pixel>(blue);
}

/// How unlike two colours are: the sum of squares.
constexpr int distance(Pixel one, Pixel other)
{
    const int r = red(one) - red(other);
    const int g = green(one) - green(other);
    const int b = blue(one) - blue(other);
    return r * r + g * g + b * b;
}

} // namespace GIF
