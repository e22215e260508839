#pragma once

#include "Media/Orientation.h"
#include "Support/Result.h"

#include <QByteArray>
#include <QIODevice>
#include <QSize>

#include <optional>

/// What a picture's file says about it before the pixels.
struct PictureHeader {
    QByteArray format; ///< As QImageReader calls it.
    QSize stored;      ///< In pixels, before it is made upright.
    Orientation orientation;
    std::optional<double> dotsPerInch; ///< Across the stored rows.

    /// Recognises the format by its content and reads no further than the header. `file` is
    /// anywhere and stays so.
    static Result<PictureHeader> read(QIODevice& file);
};
