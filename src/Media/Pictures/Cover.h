#pragma once

#include <QRectF>
#include <QSize>

/// Which part of a picture a thumbnail shows, and how large.
struct Cover {
    QRectF part; ///< In pixels of the picture, around its centre.
    QSize size;  ///< Of the thumbnail: no larger than the part, no larger than was asked for.

    /// The largest part of `target`'s shape; whole pixels of it when it is not scaled down.
    static Cover of(QSize picture, QSize target);
};
