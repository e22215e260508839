#pragma once

#include "Media/GStreamer/Handles.h"

/// The cameras that there are now, of the sound and video server or of the kernel. One thread.
namespace Devices {

/// The system's default camera; null when there is none.
Gst::Owner<GstDevice> first();

/// Of what a camera offers, which may be null, the smallest that is large and fast enough for a
/// bubble, as it comes rather than compressed. Null leaves it to the camera.
Gst::Owner<GstCaps> formatOf(const GstCaps* offered);

/// Whether pictures of that format are compressed.
bool isCompressed(const GstCaps* format);

} // namespace Devices
