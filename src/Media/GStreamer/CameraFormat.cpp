#include "Media/GStreamer/CameraFormat.h"

#include <algorithm>
#include <optional>

namespace {

/// What a bubble has on a screen of scale 2, and some more; in pixels.
constexpr int enoughPixels = 480;
constexpr int enoughFramesASecond = 24;
constexpr int wantedFramesASecond = 30;
constexpr const char* raw = "video/x-raw";
constexpr const char* compressed = "image/jpeg";

bool holds(const GValue* value, GType type)
{
    return value && value->g_type == type; // GLib's own macros cast the const away
}

/// How fast a format can be at most, in frames a second; unknown is fast enough.
double fastest(const GstStructure& format)
{
    const auto of = [](const GValue* value) {
        return static_cast<double>(gst_value_get_fraction_numerator(value)) /
               std::max(gst_value_get_fraction_denominator(value), 1);
    };
    const GValue* const rates = gst_structure_get_value(&format, "framerate");
    if (holds(rates, GST_TYPE_FRACTION))
        return of(rates);
    if (holds(rates, GST_TYPE_FRACTION_RANGE))
        return of(gst_value_get_fraction_range_max(rates));
    if (!holds(rates, GST_TYPE_LIST))
        return wantedFramesASecond;
    double most = 0;
    for (guint i = 0; i < gst_value_list_get_size(rates); ++i) {
        const GValue* const rate = gst_value_list_get_value(rates, i);
        if (holds(rate, GST_TYPE_FRACTION))
            most = std::max(most, of(rate));
    }
    return most;
}

/// How much a format costs; absent when it is not good enough.
std::optional<int> costOf(const GstStructure& format)
{
    constexpr int costOfDecompression = 3;
    const bool isRaw = gst_structure_has_name(&format, raw);
    int width = 0, height = 0;
    if ((!isRaw && !gst_structure_has_name(&format, compressed)) ||
        !gst_structure_get_int(&format, "width", &width) ||
        !gst_structure_get_int(&format, "height", &height) ||
        std::min(width, height) < enoughPixels || fastest(format) < enoughFramesASecond)
        return {};
    return width * height * (isRaw ? 1 : costOfDecompression);
}

} // namespace

Gst::Owner<GstCaps> CameraFormat::bestOf(const GstCaps* offered)
{
    const GstStructure* best = nullptr;
    int least = 0;
    for (guint i = 0; offered && i < gst_caps_get_size(offered); ++i) {
        const GstStructure* const format = gst_caps_get_structure(offered, i);
        const std::optional<int> cost = costOf(*format);
        // Pictures elsewhere than in memory are not for everybody to read.
        const bool isInMemory = gst_caps_features_is_equal(gst_caps_get_features(offered, i),
                                                           GST_CAPS_FEATURES_MEMORY_SYSTEM_MEMORY);
        if (cost && isInMemory && (!best || *cost < least)) {
            best = format;
            least = *cost;
        }
    }
    if (!best)
        return nullptr;
    GstStructure* const chosen = gst_structure_copy(best);
    gst_structure_fixate_field_nearest_fraction(chosen, "framerate", wantedFramesASecond, 1);
    return Gst::Owner<GstCaps>(gst_caps_new_full(chosen, nullptr));
}

bool CameraFormat::isCompressed(const GstCaps* format)
{
    return format && gst_structure_has_name(gst_caps_get_structure(format, 0), compressed);
}
