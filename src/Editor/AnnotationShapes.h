#pragma once

#include "Editor/Annotation.h"

#include <QPointF>
#include <QRectF>

#include <algorithm>
#include <array>

/// The measures of annotations, which decide both what is drawn and how far it reaches. In points.
namespace AnnotationShapes {

/// Of the line width.
inline constexpr double highlightWidth = 4.5;

// Files can hold any number. What lies farther out than this is not seen, but would keep Qt busy.
inline constexpr double farthest = 50'000;
inline constexpr double thickest = 10'000;

double lineWidth(const Annotation& annotation);
double counterRadius(double lineWidth);
double counterTextSize(double radius);
double labelSize(const Annotation& annotation);

/// A counter's number.
QString counterText(const Annotation& annotation);

/// What an arrow is made of.
struct Arrow {
    Geometry::Point tail;
    Geometry::Point shaftEnd; ///< Short of the tip, which would be blunt otherwise.
    std::array<Geometry::Point, 3> head;
};
Arrow arrow(const Annotation& annotation);

/// The picture's points as the painter's.
class Space {
public:
    explicit Space(const Geometry::Flip& flip)
        : m_flip(flip)
    {
    }

    QPointF operator()(Geometry::Point point) const
    {
        const Geometry::TopLeftPoint p = m_flip.topLeftFromBottomLeft(point);
        return {std::clamp(p.x, -farthest, farthest), std::clamp(p.y, -farthest, farthest)};
    }

    QRectF operator()(const Geometry::Rect& rect) const
    {
        return {(*this)(Geometry::Point{rect.minX(), rect.maxY()}),
                (*this)(Geometry::Point{rect.maxX(), rect.minY()})};
    }

    Geometry::TopLeftPoint textOrigin(Geometry::Point point) const
    {
        return m_flip.topLeftFromBottomLeft(point);
    }

private:
    const Geometry::Flip& m_flip;
};

} // namespace AnnotationShapes
