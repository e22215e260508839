#pragma once

#include <QColor>
#include <QImage>
#include <QWidget>

/// A vertical gradient's stops, to work out the colour at a share of its height.
struct Stops {
    const char* top;
    double middleLocation;
    const char* middle;
    const char* bottom;

    QColor at(double share) const;
};

/// `top` with `alpha` laid over `below`.
QColor mixed(const QColor& below, const QColor& top, double alpha);

namespace Rendered {

/// What pictures are filled with before a widget paints.
inline const QColor ground(0x80, 0x00, 0x80);

/// What `view` paints over the ground, at so many pixels a point.
QImage at(QWidget& view, double scale);

} // namespace Rendered

/// Every channel within three of 255: a gradient's dithering and rounding.
void expectColor(const QImage& image, QPoint pixel, const QColor& wanted);

/// The stroked box of `size` (points, from the origin, inset by half a point) has corners of
/// `radius` points: the ground outside of them, paint inside.
void expectRounded(const QImage& image, QSizeF size, double radius, double scale);
