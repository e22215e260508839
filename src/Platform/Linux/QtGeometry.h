#pragma once

#include "Support/Geometry.h"

#include <QRectF>

/// Qt's rectangles have y down; these only change the type.
inline Geometry::TopLeftRect topLeftRect(const QRectF& r)
{
    return {r.x(), r.y(), r.width(), r.height()};
}
