#pragma once

#include "Media/Av/Handles.h"
#include "Media/FFmpeg/Converters.h"
#include "Media/Orientation.h"
#include "Support/Result.h"

#include <QImage>
#include <QSize>

/// How decoded frames become pictures.
class FrameImage {
public:
    explicit FrameImage(Orientation orientation)
        : m_orientation(orientation)
    {
    }

    /// Upright, with square pixels.
    QSize sizeOf(const AVFrame& frame) const;

    /// Fitted into `box` but not enlarged; at its own size when that is empty.
    Result<QImage> render(const AVFrame& frame, QSize box);

private:
    Orientation m_orientation;
    Av::Scaler m_scaler; // kept, since the next frame mostly needs the same
};

/// What the matrix of a track means; a turn by anything but a quarter is left out.
Orientation orientationOf(const AVStream& stream);
