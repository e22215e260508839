#include "GIFSchedule.h"

#include "Support/Log.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double mostFrames = 240;
constexpr double mostFramesPerSecond = 10;
constexpr double shortest = 0.2;  // seconds
constexpr double timescale = 600; // ticks a second
constexpr double longestDelay = 65535;

int numberOfFrames(double framesPerSecond, double duration)
{
    // The product may be 239.99999999999997: that is 239 frames.
    const double product = framesPerSecond * duration;
    constexpr double beyond = 9223372036854775808.0; // 64 bits
    if (!(product > -beyond && product < beyond))
        Log::fatal(QStringLiteral("a GIF cannot be made of %1 seconds").arg(duration));
    const int count = static_cast<int>(std::min(product, mostFrames));
    return count < 2 ? 1 : count;
}

} // namespace

GIFSchedule GIFSchedule::of(TimeRange range, double videoDuration)
{
    const bool isWhole = !std::isfinite(range.duration) || range.duration <= 0;
    double duration = isWhole ? videoDuration : range.duration;
    double framesPerSecond = mostFramesPerSecond;
    if (duration < shortest)
        duration = shortest;
    else
        framesPerSecond = std::min(mostFrames / duration, mostFramesPerSecond);

    GIFSchedule schedule;
    const int count = numberOfFrames(framesPerSecond, duration);
    for (int i = 0; i < count; ++i) {
        const double passed = i / framesPerSecond;
        schedule.times.push_back(range.start + std::round(passed * timescale) / timescale);
    }
    schedule.delay =
        static_cast<int>(std::lround(std::clamp(100 / framesPerSecond, 1.0, longestDelay)));
    return schedule;
}
