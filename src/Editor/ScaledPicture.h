#pragma once

#include "Editor/BaseImage.h"

#include <QRect>

/// A picture at a size in pixels. A part of it is the same whatever other parts were asked for,
/// which Qt's own scaling does not promise.
class ScaledPicture {
public:
    explicit ScaledPicture(QImage picture)
        : m_picture(std::move(picture))
    {
    }

    void setSize(QSize size);
    QSize size() const { return m_size; }

    /// `part` is in pixels of that size and lies within it.
    QImage part(const QRect& part);

private:
    QImage enlarged(const QRect& part) const;

    QImage m_picture; // 32 bits a pixel
    QSize m_size;
    QImage
        m_reduced; ///< All of it, made when it is asked for; null for a size that is not smaller.
};
