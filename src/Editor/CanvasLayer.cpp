#include "Editor/CanvasLayer.h"

#include <QPainter>

namespace {

/// So much more than is seen is held on every side, so that scrolling rarely has to move it all.
constexpr int margin = 256; // pixels
/// More areas than this are painted as one.
constexpr int manyAreas = 16;

} // namespace

void CanvasLayer::show(const QRect& seen, const QRect& canvas)
{
    const QRect wanted = seen.adjusted(-margin, -margin, margin, margin) & canvas;
    const bool isFarTooLarge = m_place.width() > wanted.width() + 2 * margin ||
                               m_place.height() > wanted.height() + 2 * margin;
    if (m_place.contains(seen) && !isFarTooLarge)
        return;
    QImage pixels(wanted.size(), QImage::Format_RGB32);
    QRegion kept = m_painted & wanted;
    if (!pixels.isNull() && !kept.isEmpty()) {
        QPainter painter(&pixels);
        painter.translate(-wanted.topLeft());
        for (const QRect& area : kept)
            painter.drawImage(area.topLeft(), m_pixels, area.translated(-origin()));
    }
    m_pixels = std::move(pixels);
    m_place = wanted;
    m_painted = std::move(kept);
}

void CanvasLayer::complete(const QRegion& area, const Paint& paint)
{
    QRegion missing = (area & m_place) - m_painted;
    if (missing.isEmpty() || m_pixels.isNull())
        return;
    if (missing.rectCount() > manyAreas)
        missing = missing.boundingRect();
    QPainter painter(&m_pixels);
    painter.translate(-origin());
    for (const QRect& part : missing) {
        painter.save();
        painter.setClipRect(part); // one at a time: Qt draws some things otherwise in other shapes
        paint(painter, part);
        painter.restore();
    }
    m_painted += missing;
}

void CanvasLayer::paintOver(const std::function<void(QPainter& painter)>& paint)
{
    if (m_painted.isEmpty())
        return;
    QPainter painter(&m_pixels);
    painter.translate(-origin());
    painter.setClipRect(m_painted.boundingRect());
    paint(painter);
}

QImage CanvasLayer::view(const QRect& area) const
{
    const QPoint at = area.topLeft() - origin();
    return {m_pixels.constScanLine(at.y()) + qsizetype{4} * at.x(), area.width(), area.height(),
            m_pixels.bytesPerLine(), m_pixels.format()};
}
