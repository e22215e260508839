#include "Media/GStreamer/PipeWireServer.h"

#include "Media/GStreamer/DeviceList.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace {

std::string variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

/// Where PipeWire's clients look for it, in this order.
std::vector<std::string> socketPaths()
{
    const std::string remote = variable("PIPEWIRE_REMOTE");
    if (remote.starts_with('/'))
        return {remote};
    std::string folder = variable("PIPEWIRE_RUNTIME_DIR");
    if (folder.empty())
        folder = variable("XDG_RUNTIME_DIR");
    const std::string name = '/' + (remote.empty() ? "pipewire-0" : remote);
    std::vector<std::string> paths;
    if (!folder.empty())
        paths.push_back(folder + name);
    paths.push_back("/run/pipewire" + name); // one server for all users
    return paths;
}

/// Invalid when nobody listens there.
FileDescriptor connectedTo(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return FileDescriptor();
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    FileDescriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!made ||
        ::connect(made.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return FileDescriptor();
    return made;
}

/// Not the one that GStreamer shares between all its clients.
Gst::Owner<GstDeviceProvider> makeDevices(int socket)
{
    const Gst::Owner<GstDeviceProviderFactory> known(
        gst_device_provider_factory_find(PipeWireServer::provider));
    if (!known)
        return nullptr;
    const Gst::Owner<GstPluginFeature> loaded(
        gst_plugin_feature_load(GST_PLUGIN_FEATURE(known.get())));
    if (!loaded)
        return nullptr;
    const GType type = gst_device_provider_factory_get_device_provider_type(
        GST_DEVICE_PROVIDER_FACTORY(loaded.get()));
    return Gst::Owner<GstDeviceProvider>(
        GST_DEVICE_PROVIDER(gst_object_ref_sink(g_object_new(type, "fd", socket, nullptr))));
}

} // namespace

GstDeviceProvider* PipeWireServer::devices()
{
    if (!isConnected())
        connect();
    return isConnected() ? m_connections.back().devices.get() : nullptr;
}

bool PipeWireServer::isConnected() const
{
    if (m_connections.empty())
        return false;
    pollfd socket = {m_connections.back().socket.get(), POLLRDHUP, 0};
    return poll(&socket, 1, 0) <= 0; // a signal tells nothing
}

void PipeWireServer::connect()
{
    FileDescriptor socket;
    for (const std::string& path : socketPaths()) {
        socket = connectedTo(path);
        if (socket)
            break;
    }
    if (!socket)
        return;
    Gst::Owner<GstDeviceProvider> devices = makeDevices(socket.get());
    if (devices && keepList(*devices))
        m_connections.push_back({std::move(socket), std::move(devices)});
}
