#pragma once

#include "desktop/flow/Arrangement.h"
#include "desktop/flow/Tamrik.h"

#include <QImage>

/// Takes pictures on a desktop with a PatternedBackground, as a user does, and checks them.
class CaptureChecks {
public:
    CaptureChecks(const Desktop::VirtualDesktop& desktop, Tamrik& tamrik,
                  const Arrangement& arrangement)
        : m_desktop(desktop)
        , m_tamrik(tamrik)
        , m_arrangement(arrangement)
    {
    }

    /// Opens the overlay, which must cover the screens; drags on the screen `on`, whose overlay
    /// must show the selection as it was behind it and all else of the screen otherwise; and lets
    /// go, whereupon the selection must be saved, pixel for pixel.
    void expectSelectedIsSaved(const ArrangedScreen& on, QPoint from, QPoint to);

    /// The same with an overlay that is open.
    void expectDragIsSaved(const ArrangedScreen& on, QPoint from, QPoint to);

    /// Takes the newest picture away, once the program is done with it; null when there is none.
    QImage takePicture();

    /// Waits until the overlay covers just the screens.
    Desktop::Outcome<void> awaitOverlayOnAll() const;

private:
    Desktop::Outcome<void> awaitShown(const ArrangedScreen& on, const Expected& expected) const;
    void expectPicture(const Expected& expected);

    const Desktop::VirtualDesktop& m_desktop;
    Tamrik& m_tamrik;
    const Arrangement& m_arrangement;
};
