#pragma once

#include "Support/Geometry.h"

#include <QImage>

/// The picture under annotations, as it was captured.
struct BaseImage {
    QImage pixels;       ///< Device pixel ratio 1. Null for a picture that has none.
    Geometry::Size size; ///< In points; annotations are in this space, y up.

    /// `density` in pixels a point.
    static BaseImage ofDensity(QImage pixels, double density)
    {
        const Geometry::Size size{pixels.width() / density, pixels.height() / density};
        return {std::move(pixels), size};
    }

    double pixelsPerPointX() const { return pixels.width() / size.width; }
    double pixelsPerPointY() const { return pixels.height() / size.height; }
};
