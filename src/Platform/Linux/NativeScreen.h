#pragma once

#include "Support/ScreenTable.h"

#include <QList>
#include <QRect>

#include <vector>

QT_FORWARD_DECLARE_CLASS(QScreen)

/// Where Qt's screens lie in the window system's own pixels.
namespace NativeScreen {

/// The screen's rectangle on the root window, in native pixels.
QRect pixels(const QScreen& screen);

/// A part of the screen's pixels in Qt's desktop coordinates. Qt keeps each screen's native origin
/// and divides only what lies beyond it by the scale.
QRectF logical(const QScreen& screen, QRect nativePart);

/// Qt's screens, the primary one first.
QList<QScreen*> primaryFirst();

/// The same screens as the capture tool is told of them: points from the top left of the primary
/// screen.
std::vector<ScreenTable::Screen> table();

} // namespace NativeScreen
