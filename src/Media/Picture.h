#pragma once

#include "Support/Result.h"

#include <QImage>
#include <QSize>
#include <QSizeF>
#include <QString>

/// Still pictures in files: PNG, JPEG, GIF (its first picture), BMP, and WebP and TIFF where Qt has
/// a plugin for them. The content decides, not the name.
///
/// Any thread. Anything but a readable picture in a regular file is a failure; nothing waits, warns
/// or takes memory for a size that only a header claims.
namespace Picture {

struct Info {
    QSize pixels;   ///< Upright.
    double density; ///< Pixels a point.

    QSizeF points() const { return QSizeF(pixels) / density; }
};

/// What the file's header says, without decoding.
Result<Info> info(const QString& path);

/// The largest part of `target`'s shape around the picture's centre, scaled down to `target`; a
/// smaller one is not enlarged. sRGB, RGB32 or premultiplied ARGB32. `target` is in pixels, not
/// empty.
Result<QImage> thumbnail(const QString& path, QSize target);

/// The whole picture: upright, sRGB, RGB32 or premultiplied ARGB32, its device pixel ratio 1.
Result<QImage> load(const QString& path);

} // namespace Picture
