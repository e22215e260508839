#pragma once

#include <QImage>
#include <QRectF>

#include <functional>

QT_FORWARD_DECLARE_CLASS(QPainter)

/// The pixels that a painter's drawing ends up in.
namespace AnnotationDevice {

/// What of the device a painter can reach, in the device's pixels.
QRect reachable(const QPainter& painter);

/// The device's pixels for a unit of the painter.
double scale(const QPainter& painter);

/// Some of the device's pixels.
struct Sheet {
    QImage pixels; ///< Null when there is nothing, or not memory enough.
    QPoint place;  ///< Of its top left corner.
};

/// Draws on a painter of the same space as the one that the result is for.
using DrawText = std::function<void(QPainter& painter)>;

/// Text within `box`, in lines so high, alone on a sheet; `below` moves it down, all in the
/// painter's space. The sheet reaches so many pixels farther than what is seen of it.
///
/// Qt rounds places of glyphs towards zero. On its sheet each glyph is to the right of and below
/// the corner, unless it is seen no more, and so does not depend on the painter's own corner or
/// clip.
Sheet textSheet(const QPainter& painter, const QRectF& box, double lineHeight, double below,
                int farther, const DrawText& drawText);

/// Draws a sheet over what the device has.
void put(QPainter& painter, const Sheet& sheet);

} // namespace AnnotationDevice
