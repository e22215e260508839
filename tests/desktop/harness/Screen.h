#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/WaitUntil.h"

#include <QtCore/QRect>
#include <QtGui/QColor>
#include <QtGui/QImage>

namespace Desktop {

class VirtualDesktop;

/// What is to be seen on a desktop; pictures are without the pointer. Everything is in pixels of
/// the whole desktop, origin at its top left.
class Screen {
public:
    explicit Screen(const VirtualDesktop& desktop)
        : m_desktop(desktop)
    {
    }

    /// The whole desktop, all its screens.
    Outcome<QRect> bounds() const;
    /// A picture of a part of the desktop, or of all of it when `area` is empty.
    Outcome<QImage> grab(QRect area = {}) const;
    Outcome<QColor> pixel(QPoint point) const;
    /// Waits until the pixel has that colour, each channel to within `tolerance`.
    Outcome<void> awaitColor(QPoint point, QColor color, int tolerance = 0,
                             std::chrono::milliseconds deadline = patience) const;

    /// The pointer's shape, by the name that programs give it, such as "cross"; empty when it has
    /// none.
    Outcome<QByteArray> pointerShape() const;

private:
    const VirtualDesktop& m_desktop;
};

/// Whether each channel differs by no more than `tolerance`.
bool isNearly(QColor a, QColor b, int tolerance);

/// How many pixels differ by more than `tolerance` in a channel. All of the larger picture's when
/// the pictures are not of the same size.
int differingPixels(const QImage& a, const QImage& b, int tolerance = 0);

Outcome<void> savePng(const QImage& image, const QString& path);

} // namespace Desktop
