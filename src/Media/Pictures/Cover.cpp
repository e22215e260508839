#include "Media/Pictures/Cover.h"

#include <algorithm>
#include <cmath>

namespace {

int wholePixels(double length)
{
    return std::max(1, static_cast<int>(std::lround(length)));
}

} // namespace

Cover Cover::of(QSize picture, QSize target)
{
    const QSizeF part = QSizeF(target).scaled(QSizeF(picture), Qt::KeepAspectRatio);
    if (part.width() > target.width()) {
        const QPointF origin((picture.width() - part.width()) / 2,
                             (picture.height() - part.height()) / 2);
        return {{origin, part}, target};
    }
    const QSize size(wholePixels(part.width()), wholePixels(part.height()));
    const QPoint origin((picture.width() - size.width()) / 2,
                        (picture.height() - size.height()) / 2);
    return {QRectF(QRect(origin, size)), size};
}
