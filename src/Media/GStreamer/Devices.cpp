#include "Media/GStreamer/Devices.h"

Devices::Devices()
{
    if (!gst_init_check(nullptr, nullptr, nullptr))
        return;
    m_monitor.reset(gst_device_monitor_new());
    gst_device_monitor_add_filter(m_monitor.get(), "Video/Source", nullptr);
    start();
}

Devices::~Devices()
{
    if (m_monitor)
        gst_device_monitor_stop(m_monitor.get());
}

void Devices::start()
{
    gst_device_monitor_start(m_monitor.get());
    // We ask for the list; what it tells of each change would heap up.
    const Gst::Owner<GstBus> bus(gst_device_monitor_get_bus(m_monitor.get()));
    gst_bus_set_flushing(bus.get(), TRUE);
}

void Devices::renew()
{
    if (!m_monitor)
        return;
    gst_device_monitor_stop(m_monitor.get());
    start();
}

Gst::Owner<GstDevice> Devices::first() const
{
    GList* const devices = m_monitor ? gst_device_monitor_get_devices(m_monitor.get()) : nullptr;
    Gst::Owner<GstDevice> found;
    for (const GList* item = devices; item; item = item->next) {
        auto* const device = static_cast<GstDevice*>(item->data);
        GstStructure* const properties = gst_device_get_properties(device);
        gboolean isDefault = FALSE;
        if (properties) {
            gst_structure_get_boolean(properties, "is-default", &isDefault);
            gst_structure_free(properties);
        }
        if (!found || isDefault)
            found.reset(static_cast<GstDevice*>(gst_object_ref(device)));
    }
    g_list_free_full(devices, gst_object_unref);
    return found;
}
