#pragma once

#include "Support/Geometry.h"

#include <QGuiApplication>
#include <QRectF>
#include <QScreen>

/// Qt's rectangles have y down; these two only change the type.
inline Geometry::TopLeftRect topLeftRect(const QRectF& r)
{
    return {r.x(), r.y(), r.width(), r.height()};
}

inline QRectF qtRect(Geometry::TopLeftRect r)
{
    return {r.x, r.y, r.width, r.height};
}

/// Turns y over between Qt's desktop coordinates and global points, as the screens are now.
inline Geometry::Flip desktopFlip()
{
    const QScreen* primary = QGuiApplication::primaryScreen();
    return Geometry::Flip(primary ? topLeftRect(primary->geometry()) : Geometry::TopLeftRect{});
}
