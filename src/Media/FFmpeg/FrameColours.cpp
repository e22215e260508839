#include "Media/FFmpeg/FrameColours.h"

#include <algorithm>
#include <array>

extern "C" {
#include <libswscale/swscale.h>
}

namespace {

struct Matrix {
    AVColorSpace name;
    int coefficients; // as swscale calls them
};

constexpr std::array matrices{
    Matrix{AVCOL_SPC_BT709, SWS_CS_ITU709},        Matrix{AVCOL_SPC_FCC, SWS_CS_FCC},
    Matrix{AVCOL_SPC_BT470BG, SWS_CS_ITU601},      Matrix{AVCOL_SPC_SMPTE170M, SWS_CS_ITU601},
    Matrix{AVCOL_SPC_SMPTE240M, SWS_CS_SMPTE240M}, Matrix{AVCOL_SPC_BT2020_NCL, SWS_CS_BT2020},
    Matrix{AVCOL_SPC_BT2020_CL, SWS_CS_BT2020},
};

} // namespace

int FrameColours::matrixOf(const AVFrame& frame)
{
    for (const Matrix& matrix : matrices) {
        if (matrix.name == frame.colorspace)
            return matrix.coefficients;
    }
    return frame.width >= 1280 || frame.height > 576 ? SWS_CS_ITU709 : SWS_CS_ITU601;
}

bool FrameColours::isFullRange(const AVFrame& frame)
{
    // Formats of their own from when there was no tag.
    constexpr std::array formats{AV_PIX_FMT_YUVJ411P, AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P,
                                 AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUVJ444P};
    return frame.color_range == AVCOL_RANGE_JPEG ||
           std::find(formats.begin(), formats.end(), frame.format) != formats.end();
}
