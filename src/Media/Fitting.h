#pragma once

#include <QSize>

#include <algorithm>
#include <cmath>

/// A picture's `size`, scaled down to fit into `box` but not enlarged; as it is when that is empty.
inline QSize fitted(QSize size, QSize box)
{
    if (box.isEmpty() || (size.width() <= box.width() && size.height() <= box.height()))
        return size;
    const QSizeF scaled = QSizeF(size).scaled(QSizeF(box), Qt::KeepAspectRatio);
    return {std::max(1, static_cast<int>(std::lround(scaled.width()))),
            std::max(1, static_cast<int>(std::lround(scaled.height())))};
}
