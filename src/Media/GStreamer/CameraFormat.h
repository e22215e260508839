#pragma once

#include "Media/GStreamer/Handles.h"

/// In which format a camera is asked for its pictures.
namespace CameraFormat {

/// Of what a camera offers, which may be null, the smallest that is large and fast enough for a
/// bubble, as it comes rather than compressed. Null leaves it to the camera.
Gst::Owner<GstCaps> bestOf(const GstCaps* offered);

/// Whether pictures of that format are compressed.
bool isCompressed(const GstCaps* format);

} // namespace CameraFormat
