#pragma once

#include "Support/Geometry.h"

#include <QString>
#include <QUrl>

#include <ostream>

/// How GoogleTest prints our types in a failure.
namespace Geometry {

inline void PrintTo(const Point& p, std::ostream* out)
{
    *out << "Point(" << p.x << ", " << p.y << ")";
}

inline void PrintTo(const Rect& r, std::ostream* out)
{
    *out << "Rect(" << r.x << ", " << r.y << ", " << r.width << " x " << r.height << ")";
}

inline void PrintTo(const TopLeftRect& r, std::ostream* out)
{
    *out << "TopLeftRect(" << r.x << ", " << r.y << ", " << r.width << " x " << r.height << ")";
}

} // namespace Geometry

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QUrl& url, std::ostream* out)
{
    *out << url.toString().toStdString();
}
