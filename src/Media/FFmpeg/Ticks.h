#pragma once

#include "Media/Av/Handles.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

/// A time in the ticks of `base`, rounded down but for a microsecond: times come through decimals.
inline std::int64_t ticksAt(double seconds, AVRational base)
{
    constexpr double microsecond = 1e-6;
    constexpr double most = 4e18;
    const double ticks = std::floor((seconds + microsecond) / av_q2d(base));
    return std::isnan(ticks) ? 0 : static_cast<std::int64_t>(std::clamp(ticks, -most, most));
}
