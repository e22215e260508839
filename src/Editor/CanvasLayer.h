#pragma once

#include <QImage>
#include <QRegion>

#include <functional>

QT_FORWARD_DECLARE_CLASS(QPainter)

/// What has been painted of the part of a canvas that is seen, opaque. All in the canvas's pixels.
class CanvasLayer {
public:
    /// Paints `area` of the canvas, to which the painter is clipped.
    using Paint = std::function<void(QPainter& painter, const QRect& area)>;

    /// Has room for `seen`, which lies within `canvas`, and keeps what it has of that.
    void show(const QRect& seen, const QRect& canvas);
    void invalidate(const QRect& area) { m_painted -= area; }
    void clear() { *this = {}; }

    /// Whether all of `area` has been painted.
    bool has(const QRect& area) const { return (QRegion(area) - m_painted).isEmpty(); }

    /// Has `paint` paint what is missing of `area`.
    void complete(const QRegion& area, const Paint& paint);

    /// Has `paint` paint over all that has been painted.
    void paintOver(const std::function<void(QPainter& painter)>& paint);

    const QImage& pixels() const { return m_pixels; }
    /// Where its pixels begin.
    QPoint origin() const { return m_place.topLeft(); }
    QImage part(const QRect& area) const { return m_pixels.copy(area.translated(-origin())); }
    /// The same without a copy: for as long as nothing of the layer changes.
    QImage view(const QRect& area) const;

private:
    QImage m_pixels;
    QRect m_place;
    QRegion m_painted;
};
