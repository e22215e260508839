#include "RecordingControlsPlacement.h"

#include "Support/Log.h"

#include <algorithm>
#include <cmath>

using Geometry::Point;
using Geometry::Rect;
using Geometry::Size;

namespace {

constexpr double screenMargin = 12;

bool intersect(const Rect& a, const Rect& b)
{
    return a.minX() < b.maxX() && b.minX() < a.maxX() && a.minY() < b.maxY() && b.minY() < a.maxY();
}

} // namespace

std::optional<Point> RecordingControlsPlacement::origin(Rect recorded, Size controls,
                                                        const std::vector<Screen>& screens)
{
    if (screens.empty())
        return std::nullopt;
    const auto shown = std::find_if(screens.begin(), screens.end(), [&](const Screen& screen) {
        return intersect(screen.frame, recorded);
    });
    const Rect& visible =
        shown == screens.end() ? screens.front().visibleFrame : shown->visibleFrame;
    const double rightmost = visible.maxX() - controls.width - screenMargin;
    const double centred = recorded.x + recorded.width / 2 - controls.width / 2;
    const double x = std::min(std::max(centred, visible.minX() + screenMargin), rightmost);
    const double below = recorded.minY() - controls.height - distance;
    if (below >= visible.minY() + screenMargin)
        return Point{x, below};
    const double above = recorded.maxY() + distance;
    if (above + controls.height <= visible.maxY() - screenMargin)
        return Point{x, above};
    return Point{rightmost, visible.minY() + screenMargin};
}

QString RecordingControlsPlacement::timeText(double seconds)
{
    // Past this a double says no second any more.
    constexpr double longest = 1e15;
    if (!std::isfinite(seconds) || std::abs(seconds) > longest)
        Log::fatal(QStringLiteral("a recording cannot last %1 seconds").arg(seconds));
    const auto whole = static_cast<long long>(seconds);
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}
