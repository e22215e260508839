#pragma once

#include "Media/GStreamer/Handles.h"

/// Has a provider keep its list of devices up to date, for us to ask for. False when it cannot.
inline bool keepList(GstDeviceProvider& provider)
{
    const bool isKept = !gst_device_provider_can_monitor(&provider) ||
                        gst_device_provider_start(&provider) != FALSE;
    // What it tells of each change would heap up. To start it opens its bus anew.
    const Gst::Owner<GstBus> bus(gst_device_provider_get_bus(&provider));
    gst_bus_set_flushing(bus.get(), TRUE);
    return isKept;
}
