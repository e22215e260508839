#pragma once

#include <cstdint>

/// BT.709 in the limited range, for one colour or the sum of several. Weights are in 256ths of the
/// way from 0 to 255, and each kind's sum is what full white or a full colour comes to.
namespace Luminance {

inline constexpr int floor = 16;       // of brightness
inline constexpr int colourless = 128; // of both colour planes

constexpr std::int32_t brightness(std::int32_t red, std::int32_t green, std::int32_t blue)
{
    return 47 * red + 157 * green + 16 * blue;
}

constexpr std::int32_t blueness(std::int32_t red, std::int32_t green, std::int32_t blue)
{
    return 112 * blue - 26 * red - 86 * green;
}

constexpr std::int32_t redness(std::int32_t red, std::int32_t green, std::int32_t blue)
{
    return 112 * red - 102 * green - 10 * blue;
}

} // namespace Luminance
