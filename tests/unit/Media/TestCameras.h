#pragma once

#include <string>

/// A server for GStreamer that knows of at most one camera.
namespace TestCameras {

/// A camera that offers `format` and sends what the elements `source`, in the words of
/// gst-launch-1.0, make; the system's default one. Offers it memory:DMABuf, it says so of what it
/// sends.
void plugIn(const std::string& format, const std::string& source);
void unplug();

/// Call it before anybody asks for cameras.
void startServer();

/// Plugs one in and out again, and says whether everybody has forgotten it.
bool forgetsACameraThatGoes();

} // namespace TestCameras
