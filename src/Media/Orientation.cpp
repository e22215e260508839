#include "Media/Orientation.h"

#include <QTransform>

Orientation Orientation::fromExif(int number)
{
    switch (number) {
    case 2:
        return {true, 0};
    case 3:
        return {false, 2};
    case 4:
        return {true, 2};
    case 5:
        return {true, 3};
    case 6:
        return {false, 1};
    case 7:
        return {true, 1};
    case 8:
        return {false, 3};
    default:
        return {};
    }
}

QImage Orientation::upright(const QImage& stored) const
{
    const QImage image = mirrored ? stored.mirrored(true, false) : stored;
    return quarterTurns == 0 ? image : image.transformed(QTransform().rotate(90 * quarterTurns));
}
