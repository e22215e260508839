#include "SoftShadow.h"

#include <QPainter>

namespace {

/// How far below the body its shadow lies, in points.
constexpr double drop = 4;
constexpr double blur = SoftShadow::reach - drop;
constexpr double darkest = 0.42;
constexpr int layers = 28;

/// How dark the shadow is at `distance` outside the body's edge.
double alphaAt(double distance)
{
    const double t = 1 - distance / blur;
    return darkest * t * t * t;
}

} // namespace

void SoftShadow::paint(QPainter& painter, const QRectF& body, double cornerRadius)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    // From the outermost layer inwards, each as dark as those below it lack.
    double below = 0;
    for (int i = 0; i < layers; ++i) {
        const double distance = blur * (1 - (i + 1.0) / layers);
        const double wanted = alphaAt(distance);
        QColor black(Qt::black);
        black.setAlphaF(static_cast<float>((wanted - below) / (1 - below)));
        painter.setBrush(black);
        painter.drawRoundedRect(
            body.translated(0, drop).adjusted(-distance, -distance, distance, distance),
            cornerRadius + distance, cornerRadius + distance);
        below = wanted;
    }
}
