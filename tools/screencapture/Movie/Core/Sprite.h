#pragma once

#include "Movie/Core/Picture.h"

#include <cstdint>
#include <vector>

/// A small image that is drawn over a picture: the mouse pointer, a ring around it.
struct Sprite {
    int width = 0;
    int height = 0;
    /// Rows without padding; 0xAARRGGBB, the colours already multiplied by the alpha.
    std::vector<std::uint32_t> pixels;
};

/// Draws it with its top left corner at (x, y), which may lie anywhere; `opacity` is from 0 to 1.
void draw(Picture& picture, const Sprite& sprite, int x, int y, double opacity = 1);

/// The ring that marks a click, for a screen of that many pixels a point; its middle is that of
/// the sprite.
Sprite makeRing(double scale);
