#include "Media/Density.h"

#include <cmath>

double Density::pixelsPerPoint(std::optional<double> dotsPerInch)
{
    constexpr double steps = 8; // a point
    constexpr double tolerance = 0.005;
    if (!dotsPerInch || !std::isfinite(*dotsPerInch))
        return 1;
    const double exact = *dotsPerInch / pointsPerInch;
    // Below an eighth: not a density but a placeholder, as the 1 x 1 that some programs write.
    if (exact < (1 - tolerance) / steps)
        return 1;
    const double snapped = std::round(exact * steps) / steps;
    return std::abs(exact - snapped) <= snapped * tolerance ? snapped : exact;
}
