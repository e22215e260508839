#pragma once

#include "Media/GStreamer/Handles.h"

/// The cameras that there are now, of the sound and video server or of the kernel. One thread.
namespace Devices {

/// The system's default camera; null when there is none.
Gst::Owner<GstDevice> first();

} // namespace Devices
