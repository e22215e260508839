#pragma once

#include "Media/GStreamer/Handles.h"

/// The cameras that there are now, of the sound and video server or of the kernel. One thread.
namespace Devices {

/// The default camera, or the first one where the system does not say which that is; null when
/// there is none.
Gst::Owner<GstDevice> first();

} // namespace Devices
