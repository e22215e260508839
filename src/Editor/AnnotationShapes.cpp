#include "Editor/AnnotationShapes.h"

#include "Editor/AnnotationText.h"

#include <cmath>

namespace AnnotationShapes {

double lineWidth(const Annotation& annotation)
{
    return std::clamp(annotation.lineWidth, 0.0, thickest);
}

double counterRadius(double lineWidth)
{
    return std::max(lineWidth * 3.2, 12.0);
}

double counterTextSize(double radius)
{
    return radius * 1.1;
}

double labelSize(const Annotation& annotation)
{
    return annotation.fontSize.value_or(AnnotationText::defaultSize);
}

QString counterText(const Annotation& annotation)
{
    return QString::number(annotation.number.value_or(0));
}

Arrow arrow(const Annotation& annotation)
{
    const Geometry::Point tail = annotation.start;
    const Geometry::Point tip = annotation.end;
    const double angle = std::atan2(tip.y - tail.y, tip.x - tail.x);
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const double length = std::max(lineWidth(annotation) * 3.5, 12.0);
    const auto behindTip = [&](double distance) {
        return Geometry::Point{tip.x - distance * cosine, tip.y - distance * sine};
    };
    const double halfWidth = length * 0.7 * 0.5;
    const Geometry::Point base = behindTip(length);
    return {tail,
            behindTip(0.8 * length),
            {tip,
             {base.x - halfWidth * sine, base.y + halfWidth * cosine},
             {base.x + halfWidth * sine, base.y - halfWidth * cosine}}};
}

} // namespace AnnotationShapes
