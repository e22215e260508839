#pragma once

#include "Support/Geometry.h"

#include <QPointer>
#include <QScreen>
#include <QString>

#include <vector>

namespace Platform {

/// One screen. Rectangles are in global points: y up, origin at the bottom left of the primary
/// screen.
struct Screen {
    QString name;
    Geometry::Rect frame;
    /// The frame less panels and docks.
    Geometry::Rect visibleFrame;
    /// Pixels a point.
    double scale = 1;
    /// Null once the screen is unplugged.
    QPointer<QScreen> handle;
};

/// The screens as they are now, the primary one first; empty when there is none.
std::vector<Screen> screens();

/// Where the pointer is, in global points. It names a pixel, so under a scale it may lie between
/// two points.
Geometry::Point mouseLocation();

/// A rectangle in global points that was measured on `screen`, and perhaps runs off it, as the one
/// that names the same pixels of the desktop. Where frames leave holes between the screens it may
/// differ.
Geometry::Rect nameable(Geometry::Rect rect, const QScreen* screen);

} // namespace Platform
