#pragma once

#include "desktop/flow/Tamrik.h"
#include "desktop/harness/WaitUntil.h"

#include <QColor>

/// The camera bubble, to somebody who looks at it, with a camera as tests/support/VirtualCamera.
/// Pixels are those of the whole desktop.
class CameraBubble {
public:
    /// Both outlive this.
    CameraBubble(const Desktop::VirtualDesktop& desktop, const Tamrik& tamrik)
        : m_desktop(desktop)
        , m_tamrik(tamrik)
    {
    }

    /// Chooses "Camera Bubble" in the status menu.
    Desktop::Outcome<void> toggle() const;

    bool isShown() const { return !circle().isNull(); }
    Desktop::Outcome<void> awaitShown(bool wanted,
                                      std::chrono::milliseconds deadline = Desktop::patience) const;

    /// The circle's square; null unless there is one bubble.
    QRect circle() const;
    /// A place in it; both from 0 to 1, from the top left.
    QPoint at(double x, double y) const;

    /// What is where along a line in the upper half: the camera's bars, as in a mirror.
    struct Bar {
        double x;
        QColor color;
    };
    static constexpr double barsY = 0.35;
    static QList<Bar> bars();
    /// Waits for all of them; a camera may take some seconds to come.
    Desktop::Outcome<void> awaitPicture() const;
    /// Waits until it is black.
    Desktop::Outcome<void> awaitNoPicture() const;

private:
    const Desktop::VirtualDesktop& m_desktop;
    const Tamrik& m_tamrik;
};
