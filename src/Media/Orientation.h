#pragma once

#include <QImage>
#include <QSize>

/// What is to be done to stored pixels so that they are upright.
struct Orientation {
    bool mirrored = false; ///< Left and right change places, before the turn.
    int quarterTurns = 0;  ///< Clockwise: 0 to 3.

    /// By EXIF's number, 1 to 8; any other is upright already.
    static Orientation fromExif(int number);

    friend bool operator==(const Orientation&, const Orientation&) = default;

    bool swapsSides() const { return quarterTurns % 2 != 0; }

    /// The size of a picture that is stored as `stored`; the other way round too.
    QSize upright(QSize stored) const { return swapsSides() ? stored.transposed() : stored; }
    QImage upright(const QImage& stored) const;
};
