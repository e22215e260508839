#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/WaitUntil.h"

#include <memory>

namespace Desktop {

class VirtualDesktop;

/// Holds the keyboard or the pointer, as another program does whose menu is open, until it is
/// released or destroyed. One at a time on a desktop.
class Grab {
public:
    enum class Device { Keyboard, Pointer };

    static Outcome<std::unique_ptr<Grab>> take(const VirtualDesktop& desktop, Device device);
    ~Grab();
    Grab(const Grab&) = delete;
    Grab& operator=(const Grab&) = delete;

    void release();

    /// Waits until the holder was told of a press of that key (an X key code) or mouse button.
    Outcome<void> awaitPress(int keyOrButton, std::chrono::milliseconds deadline = patience) const;

private:
    Grab(const VirtualDesktop& desktop, Device device);

    const VirtualDesktop& m_desktop;
    Device m_device;
    bool m_held = true;
};

} // namespace Desktop
