#include "Editor/AnnotationDevice.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

/// Sheets do not begin farther in front of what is seen, however large the text is.
constexpr double farthestBefore = 2048; // pixels

} // namespace

namespace AnnotationDevice {

QRect reachable(const QPainter& painter)
{
    const QPaintDevice& device = *painter.device();
    const double ratio = device.devicePixelRatio();
    const QRect all = QRectF(0, 0, device.width() * ratio, device.height() * ratio).toAlignedRect();
    if (!painter.hasClipping())
        return all;
    return all & painter.deviceTransform().mapRect(painter.clipBoundingRect()).toAlignedRect();
}

double scale(const QPainter& painter)
{
    return std::sqrt(std::abs(painter.deviceTransform().determinant()));
}

Sheet textSheet(const QPainter& painter, const QRectF& box, double lineHeight, double below,
                int farther, const DrawText& drawText)
{
    const QTransform toDevice = painter.deviceTransform();
    const double lines = std::min(2 * lineHeight * scale(painter), farthestBefore);
    const int before = farther + static_cast<int>(std::ceil(lines));
    const QRectF visible = reachable(painter).adjusted(-before, -before, farther, farther);
    const QRectF part = toDevice.mapRect(box.translated(0, below)) & visible;
    // Not so what is no number, which places without bounds come to.
    if (!(visible.adjusted(-1, -1, 1, 1).contains(part) && part.isValid()))
        return {};
    const QRect area = part.toAlignedRect();
    Sheet result{QImage(area.size(), QImage::Format_ARGB32_Premultiplied), area.topLeft()};
    if (result.pixels.isNull())
        return {};
    result.pixels.fill(Qt::transparent);
    QPainter text(&result.pixels);
    text.setWorldTransform(QTransform::fromTranslate(0, below) * toDevice *
                           QTransform::fromTranslate(-area.left(), -area.top()));
    drawText(text);
    return result;
}

void put(QPainter& painter, const Sheet& sheet)
{
    painter.save();
    painter.setWorldTransform(painter.deviceTransform().inverted(), true);
    painter.drawImage(sheet.place, sheet.pixels);
    painter.restore();
}

} // namespace AnnotationDevice
