#include "Movie/Core/Clicks.h"

#include <algorithm>

namespace {

constexpr double shortest = 0.25; // seconds that a ring is seen in full
constexpr double fading = 0.15;
constexpr std::size_t most = 16;

} // namespace

void Clicks::press(int button, double time)
{
    release(button, time); // should its release have been missed
    if (m_clicks.size() == most)
        m_clicks.erase(m_clicks.begin());
    m_clicks.push_back({button, time, 0, true, false, 0, 0});
}

void Clicks::release(int button, double time)
{
    for (Click& click : m_clicks) {
        if (click.button != button || !click.isDown)
            continue;
        click.isDown = false;
        click.end = std::max(time, click.pressed + shortest);
    }
}

void Clicks::pointerAt(int x, int y)
{
    for (Click& click : m_clicks) {
        if (!click.isDown && click.isPlaced)
            continue;
        click.isPlaced = true;
        click.x = x;
        click.y = y;
    }
}

std::vector<Clicks::Ring> Clicks::at(double time)
{
    std::erase_if(m_clicks,
                  [&](const Click& click) { return !click.isDown && time >= click.end + fading; });
    std::vector<Ring> rings;
    for (const Click& click : m_clicks) {
        if (!click.isPlaced)
            continue;
        const double faded = click.isDown ? 0 : std::max(0.0, time - click.end) / fading;
        rings.push_back({click.x, click.y, 1 - faded});
    }
    return rings;
}
