#pragma once

#include <cstdint>
#include <memory>
#include <string>

/// Paints on the root window of a display, and moves its mouse pointer. Everything has reached the
/// screen when a function returns. Throws std::runtime_error when there is no such display.
class RootPainter {
public:
    explicit RootPainter(const std::string& display);
    ~RootPainter();

    /// Fills the window with pixels of every colour, at random; the same ones for the same seed.
    void paintNoise(std::uint32_t seed);

    /// Fills a rectangle, in pixels, with a raw pixel value of the window's visual.
    void paintRectangle(int x, int y, int width, int height, std::uint32_t pixel);

    /// Puts the pointer there, in pixels, as a cross that everyone can see.
    void showPointerAt(int x, int y);

private:
    struct Display;
    std::unique_ptr<Display> m_display;
};
