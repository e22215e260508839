#pragma once

#include "Movie/Core/Clicks.h"
#include "Movie/Core/Sprite.h"
#include "Movie/Screen/PointerTracker.h"

#include <optional>
#include <vector>

/// What is drawn over the screen: the pointer and the rings around its clicks.
class Overlay {
public:
    struct Wishes {
        bool pointer = false;
        bool clicks = false;
    };

    /// `scale` is how many pixels a point has. The tracker outlives this.
    Overlay(PointerTracker& tracker, Wishes wishes, double scale);

    /// Whether it may look different although the pointer has no news: a ring fades.
    bool isMoving() const { return !m_shown.rings.empty(); }

    /// Whether there is anything that the pointer could change.
    bool followsPointer() const { return m_wishes.pointer || m_wishes.clicks; }

    /// Brings it up to date and says whether what is seen of it within the picture has changed.
    bool update(std::optional<PointerTracker::Place> place, double time, const Picture& picture);

    void drawOn(Picture& picture) const;

private:
    struct Shown {
        std::optional<PointerTracker::Place> pointer; // its image's top left corner
        int image = 0;
        std::vector<Clicks::Ring> rings;

        friend bool operator==(const Shown&, const Shown&) = default;
    };

    PointerTracker& m_tracker;
    Wishes m_wishes;
    Sprite m_ring;
    Clicks m_clicks;
    Shown m_shown;
};
