#pragma once

#include "Media/Orientation.h"

#include <QByteArrayView>

#include <optional>

/// The few things that we want of an EXIF block.
struct Exif {
    Orientation orientation;
    std::optional<double> dotsPerInch; ///< Across.

    /// `block` begins with its byte order. What is broken in it is left out.
    static Exif read(QByteArrayView block);
};
