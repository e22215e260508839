#include "SoftShadow.h"

#include <QPainter>

#include <algorithm>

namespace {

/// How far below the body its shadow lies, in points.
constexpr double drop = 4;
constexpr double blur = SoftShadow::reach - drop;
/// Below the body, right at its edge.
constexpr double darkest = 0.46;
constexpr int layers = 32;

/// How dark the shadow is at `distance` outside the edge of what throws it. That edge lies below
/// the body's own at the bottom, where it gets darker up to the body: a strip of one grey there
/// would look like a part of the body.
double alphaAt(double distance)
{
    const double t = (blur - distance) / (blur + drop);
    return darkest * t * t;
}

} // namespace

void SoftShadow::paint(QPainter& painter, const QRectF& body, double cornerRadius)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    // From the outermost layer inwards, each as dark as those below it lack.
    double below = 0;
    for (int i = 0; i < layers; ++i) {
        const double distance = blur - (blur + drop) * (i + 1.0) / layers;
        const double wanted = alphaAt(distance);
        QColor black(Qt::black);
        black.setAlphaF(static_cast<float>((wanted - below) / (1 - below)));
        painter.setBrush(black);
        painter.drawRoundedRect(
            body.translated(0, drop).adjusted(-distance, -distance, distance, distance),
            std::max(cornerRadius + distance, 0.0), std::max(cornerRadius + distance, 0.0));
        below = wanted;
    }
}
