#pragma once

#include "Media/GStreamer/Handles.h"

/// The cameras that there are, of the sound and video server or of the kernel. One thread.
class Devices {
public:
    /// Asks who knows about cameras, and learns from then on at once what comes and goes.
    Devices();
    ~Devices();
    Devices(const Devices&) = delete;
    Devices& operator=(const Devices&) = delete;

    /// The system's default camera; null when there is none.
    Gst::Owner<GstDevice> first() const;

    /// Asks afresh: nobody tells of a server that ended and was started anew. No camera may be at
    /// work, since it holds the old one's connection.
    void renew();

private:
    void start();

    Gst::Owner<GstDeviceMonitor> m_monitor; // null where GStreamer does not work
};
