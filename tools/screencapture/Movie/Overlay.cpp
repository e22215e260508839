#include "Movie/Overlay.h"

#include <utility>

namespace {

bool isSeen(const Sprite& sprite, int x, int y, const Picture& picture)
{
    return x + sprite.width > 0 && y + sprite.height > 0 && x < picture.width() &&
           y < picture.height();
}

} // namespace

Overlay::Overlay(PointerTracker& tracker, Wishes wishes, double scale)
    : m_tracker(tracker)
    , m_wishes(wishes)
    , m_ring(makeRing(scale))
{
}

bool Overlay::update(std::optional<PointerTracker::Place> place, double time,
                     const Picture& picture)
{
    for (const PointerTracker::Button& button : m_tracker.takeButtons()) {
        if (!m_wishes.clicks)
            continue;
        if (button.isDown)
            m_clicks.press(button.number, time);
        else
            m_clicks.release(button.number, time);
    }
    Shown shown;
    if (place) {
        m_clicks.pointerAt(place->x, place->y);
        if (m_wishes.pointer) {
            const PointerTracker::Image& image = m_tracker.image();
            const PointerTracker::Place corner{place->x - image.hotX, place->y - image.hotY};
            if (isSeen(image.sprite, corner.x, corner.y, picture)) {
                shown.pointer = corner;
                shown.image = m_tracker.imageNumber();
            }
        }
    }
    for (Clicks::Ring ring : m_clicks.at(time)) {
        ring.x -= m_ring.width / 2;
        ring.y -= m_ring.height / 2;
        if (isSeen(m_ring, ring.x, ring.y, picture))
            shown.rings.push_back(ring);
    }
    const bool isChanged = shown != m_shown;
    m_shown = std::move(shown);
    return isChanged;
}

void Overlay::drawOn(Picture& picture) const
{
    for (const Clicks::Ring& ring : m_shown.rings)
        draw(picture, m_ring, ring.x, ring.y, ring.opacity);
    if (m_shown.pointer)
        draw(picture, m_tracker.lastImage().sprite, m_shown.pointer->x, m_shown.pointer->y);
}
