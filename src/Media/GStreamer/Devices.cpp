#include "Media/GStreamer/Devices.h"

#include "Media/GStreamer/DeviceList.h"
#include "Media/GStreamer/PipeWireServer.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

constexpr const char* camera = "Video/Source";

/// Who knows about devices. Started when first asked, and then kept: it knows at once what comes
/// and goes.
struct Provider {
    std::string name;
    Gst::Owner<GstDeviceProvider> devices;
};

/// All but PipeWire's, the ones that GStreamer thinks most of first.
std::vector<Provider> startProviders()
{
    std::vector<Provider> started;
    if (!gst_init_check(nullptr, nullptr, nullptr))
        return started;
    GList* const factories =
        gst_device_provider_factory_list_get_device_providers(GST_RANK_MARGINAL);
    for (const GList* item = factories; item; item = item->next) {
        auto* const factory = static_cast<GstDeviceProviderFactory*>(item->data);
        const std::string name = GST_OBJECT_NAME(factory);
        if (name == PipeWireServer::provider ||
            !gst_device_provider_factory_has_classes(factory, camera))
            continue;
        Gst::Owner<GstDeviceProvider> devices(gst_device_provider_factory_get(factory));
        if (!devices)
            continue;
        (void)keepList(*devices); // or else it looks whenever it is asked
        started.push_back({name, std::move(devices)});
    }
    g_list_free_full(factories, gst_object_unref);
    return started;
}

/// Whether `provider`, which may be null, has the devices of another one as well.
bool replaces(GstDeviceProvider* provider, const std::string& other)
{
    gchar** const hidden = provider ? gst_device_provider_get_hidden_providers(provider) : nullptr;
    const bool does = hidden && g_strv_contains(hidden, other.c_str());
    g_strfreev(hidden);
    return does;
}

bool isDefault(GstDevice* device)
{
    GstStructure* const properties = gst_device_get_properties(device);
    gboolean is = FALSE;
    if (properties) {
        gst_structure_get_boolean(properties, "is-default", &is);
        gst_structure_free(properties);
    }
    return is != FALSE;
}

} // namespace

Gst::Owner<GstDevice> Devices::first()
{
    // Never ended: their threads may be at work when the program ends.
    static const auto& providers = *new std::vector<Provider>(startProviders());
    static auto& pipeWire = *new PipeWireServer;
    std::vector<GstDeviceProvider*> asked;
    GstDeviceProvider* const server = gst_is_initialized() ? pipeWire.devices() : nullptr;
    if (server)
        asked.push_back(server);
    for (const Provider& provider : providers) {
        if (!replaces(server, provider.name))
            asked.push_back(provider.devices.get());
    }
    Gst::Owner<GstDevice> found;
    for (GstDeviceProvider* const provider : asked) {
        GList* const devices = gst_device_provider_get_devices(provider);
        for (const GList* item = devices; item; item = item->next) {
            auto* const device = static_cast<GstDevice*>(item->data);
            if (gst_device_has_classes(device, camera) && (!found || isDefault(device)))
                found.reset(static_cast<GstDevice*>(gst_object_ref(device)));
        }
        g_list_free_full(devices, gst_object_unref);
    }
    return found;
}
