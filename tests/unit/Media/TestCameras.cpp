#include "unit/Media/TestCameras.h"

#include "Media/GStreamer/Handles.h"

#include <stdexcept>

namespace {

constexpr const char* elsewhere = "memory:DMABuf";

Gst::Owner<GstDevice> pluggedIn; // null while there is none
std::string pluggedInSource;
GstDeviceProvider* listener = nullptr; // who is told of changes

/// Says of pictures that are about to come that they lie elsewhere than in memory.
GstPadProbeReturn moveElsewhere(GstPad*, GstPadProbeInfo* info, gpointer)
{
    GstEvent* const event = gst_pad_probe_info_get_event(info);
    if (GST_EVENT_TYPE(event) != GST_EVENT_CAPS)
        return GST_PAD_PROBE_OK;
    GstCaps* format = nullptr;
    gst_event_parse_caps(event, &format);
    const Gst::Owner<GstCaps> moved(gst_caps_copy(format));
    gst_caps_set_features_simple(moved.get(), gst_caps_features_new(elsewhere, nullptr));
    gst_event_unref(event);
    info->data = gst_event_new_caps(moved.get());
    return GST_PAD_PROBE_OK;
}

GstElement* createElement(GstDevice* device, const gchar*)
{
    // A description that ends with a format is none.
    const std::string whole = pluggedInSource + " ! identity";
    GError* error = nullptr;
    GstElement* const made = gst_parse_bin_from_description(whole.c_str(), TRUE, &error);
    if (error)
        throw std::runtime_error(error->message);
    const Gst::Owner<GstCaps> offered(gst_device_get_caps(device));
    if (gst_caps_features_contains(gst_caps_get_features(offered.get(), 0), elsewhere)) {
        const Gst::Owner<GstPad> pad(gst_element_get_static_pad(made, "src"));
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, moveElsewhere, nullptr,
                          nullptr);
    }
    return made;
}

void initCameras(gpointer type, gpointer)
{
    static_cast<GstDeviceClass*>(type)->create_element = createElement;
}

GType cameraType()
{
    static const GType type =
        g_type_register_static_simple(GST_TYPE_DEVICE, "TamrikTestCamera", sizeof(GstDeviceClass),
                                      initCameras, sizeof(GstDevice), nullptr, {});
    return type;
}

gboolean startServer(GstDeviceProvider* provider)
{
    listener = provider;
    if (pluggedIn)
        gst_device_provider_device_add(provider, pluggedIn.get());
    return TRUE;
}

void stopServer(GstDeviceProvider*)
{
    listener = nullptr;
}

void initServers(gpointer type, gpointer)
{
    auto* const servers = static_cast<GstDeviceProviderClass*>(type);
    servers->start = startServer;
    servers->stop = stopServer;
    gst_device_provider_class_set_static_metadata(servers, "Cameras of the tests", "Source/Video",
                                                  "Has at most one", "Tamrik");
}

GstDevice* makeCamera(const std::string& format)
{
    const Gst::Owner<GstCaps> caps(gst_caps_from_string(format.c_str()));
    GstStructure* const properties =
        gst_structure_new("properties", "is-default", G_TYPE_BOOLEAN, TRUE, nullptr);
    auto* const made = GST_DEVICE(g_object_new(cameraType(), "display-name", "Camera",
                                               "device-class", "Video/Source", "caps", caps.get(),
                                               "properties", properties, nullptr));
    gst_structure_free(properties);
    return made;
}

} // namespace

void TestCameras::startServer()
{
    gst_init(nullptr, nullptr);
    static const bool isRegistered =
        gst_device_provider_register(
            nullptr, "tamriktestcameras", GST_RANK_PRIMARY,
            g_type_register_static_simple(GST_TYPE_DEVICE_PROVIDER, "TamrikTestServer",
                                          sizeof(GstDeviceProviderClass), initServers,
                                          sizeof(GstDeviceProvider), nullptr, {})) != FALSE;
    if (!isRegistered)
        throw std::runtime_error("no cameras for tests");
}

void TestCameras::plugIn(const std::string& format, const std::string& source)
{
    pluggedInSource = source;
    pluggedIn.reset(GST_DEVICE(gst_object_ref_sink(makeCamera(format))));
    if (listener)
        gst_device_provider_device_add(listener, pluggedIn.get());
}

void TestCameras::unplug()
{
    if (pluggedIn && listener)
        gst_device_provider_device_remove(listener, pluggedIn.get());
    pluggedIn.reset();
}

bool TestCameras::forgetsACameraThatGoes()
{
    plugIn("video/x-raw", "videotestsrc");
    GWeakRef kept;
    g_weak_ref_init(&kept, pluggedIn.get());
    unplug();
    auto* const known = static_cast<GObject*>(g_weak_ref_get(&kept));
    if (known)
        g_object_unref(known);
    g_weak_ref_clear(&kept);
    return known == nullptr;
}
