#pragma once

#include "desktop/harness/Outcome.h"

#include <QtCore/QPoint>
#include <QtCore/QRect>
#include <QtGui/QImage>

namespace Desktop {

class VirtualDesktop;

/// A background on which each pixel's colour tells where it is, also from within a picture of it.
/// No two pixels of a desktop of up to 2048 x 2048 are alike, and none stays as it is when it is
/// dimmed.
class PatternedBackground {
public:
    /// Puts it behind everything on a desktop.
    static Outcome<void> paint(const VirtualDesktop& desktop);

    static QRgb colorAt(QPoint pixel);

    /// Where on the desktop the picture was taken; fails when it is not a picture of the background
    /// alone, without a pixel moved or changed.
    static Outcome<QRect> placeOf(const QImage& picture);
};

} // namespace Desktop
