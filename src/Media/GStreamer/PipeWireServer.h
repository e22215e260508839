#pragma once

#include "Media/GStreamer/Handles.h"
#include "Support/FileDescriptor.h"

#include <vector>

/// The sound and video server as GStreamer sees it. It may come, crash and be started anew at any
/// time. GStreamer's own list of devices is neither told of that, nor can it be ended without a
/// risk (PipeWire 0.3 then corrupts memory): each server that comes gets a list of its own, on a
/// connection of its own, and those of servers that are gone are left as they are.
class PipeWireServer {
public:
    /// The list of what it has now; null while there is none. Null for ever where GStreamer does
    /// not know of PipeWire. Waits for a server that hangs.
    GstDeviceProvider* devices();

    /// The name of such lists.
    static constexpr const char* provider = "pipewiredeviceprovider";

private:
    struct Connection {
        FileDescriptor socket; ///< GStreamer tells servers apart by its number.
        Gst::Owner<GstDeviceProvider> devices;
    };

    bool isConnected() const;
    void connect();

    std::vector<Connection> m_connections; // the last one alone can be alive
};
