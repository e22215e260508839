#include "ChipContent.h"

#include <cmath>

std::optional<QString> durationBadge(double seconds)
{
    // Past this a double says no second any more, and a whole number might not hold it.
    constexpr double longest = 1e15;
    if (!std::isfinite(seconds) || std::abs(seconds) > longest)
        return std::nullopt;
    const auto whole = static_cast<long long>(seconds);
    return QStringLiteral("▶ %1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}
