#pragma once

#include "Media/Av/Handles.h"
#include "Media/FFmpeg/Converters.h"
#include "Support/Result.h"

/// How the pictures of a movie are.
struct PictureKind {
    int width = 0;  ///< Even.
    int height = 0; ///< Even.
    AVRational pixelShape{0, 1};
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVColorSpace space = AVCOL_SPC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVChromaLocation chroma = AVCHROMA_LOC_UNSPECIFIED;

    /// As `frame` is, but for what no encoder takes.
    static PictureKind of(const AVFrame& frame);
};

/// Makes frames be of one kind: planes of 4:2:0, their picture as large as fits, in the middle.
class PictureFitter {
public:
    explicit PictureFitter(const PictureKind& kind)
        : m_kind(kind)
    {
    }

    /// The frame itself when it is of that kind already.
    Result<Av::Frame> fit(Av::Frame frame);

private:
    Result<Av::Frame> converted(const AVFrame& frame);

    PictureKind m_kind;
    Av::Scaler m_scaler; // kept, since the next frame mostly needs the same
};
