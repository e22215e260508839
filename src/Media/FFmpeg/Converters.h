#pragma once

#include <memory>

extern "C" {
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

/// Owners of what FFmpeg's converters allocate.
namespace Av {

struct FreeConverter {
    void operator()(SwsContext* context) const { sws_freeContext(context); }
    void operator()(SwrContext* context) const { swr_free(&context); }
};

using Scaler = std::unique_ptr<SwsContext, FreeConverter>;
using Resampler = std::unique_ptr<SwrContext, FreeConverter>;

} // namespace Av
