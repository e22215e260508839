#include "Media/GStreamer/CameraPipeline.h"

#include "Media/GStreamer/CameraFormat.h"

#include <utility>

#include <gst/video/video.h>

namespace {

/// What FrameScaler reads.
constexpr const char* readable =
    "video/x-raw, format=(string){ YUY2, UYVY, NV12, NV21, I420, Y42B, BGRx, BGRA, RGBx, RGBA }";

AVPixelFormat formatOf(GstVideoFormat format)
{
    constexpr std::pair<GstVideoFormat, AVPixelFormat> known[] = {
        {GST_VIDEO_FORMAT_YUY2, AV_PIX_FMT_YUYV422}, {GST_VIDEO_FORMAT_UYVY, AV_PIX_FMT_UYVY422},
        {GST_VIDEO_FORMAT_NV12, AV_PIX_FMT_NV12},    {GST_VIDEO_FORMAT_NV21, AV_PIX_FMT_NV21},
        {GST_VIDEO_FORMAT_I420, AV_PIX_FMT_YUV420P}, {GST_VIDEO_FORMAT_Y42B, AV_PIX_FMT_YUV422P},
        {GST_VIDEO_FORMAT_BGRx, AV_PIX_FMT_BGR0},    {GST_VIDEO_FORMAT_BGRA, AV_PIX_FMT_BGR0},
        {GST_VIDEO_FORMAT_RGBx, AV_PIX_FMT_RGB0},    {GST_VIDEO_FORMAT_RGBA, AV_PIX_FMT_RGB0}};
    for (const auto& [theirs, ours] : known) {
        if (theirs == format)
            return ours;
    }
    return AV_PIX_FMT_NONE;
}

} // namespace

CameraPipeline::CameraPipeline(const std::atomic<int>& side, Show show)
    : m_side(side)
    , m_show(std::move(show))
    , m_pipeline(gst_pipeline_new(nullptr))
{
}

std::unique_ptr<CameraPipeline> CameraPipeline::start(GstDevice& device, Way way,
                                                      const std::atomic<int>& side, Show show)
{
    std::unique_ptr<CameraPipeline> pipeline(new CameraPipeline(side, std::move(show)));
    if (!pipeline->build(device, way) ||
        gst_element_set_state(pipeline->m_pipeline.get(), GST_STATE_PLAYING) ==
            GST_STATE_CHANGE_FAILURE)
        return nullptr;
    return pipeline;
}

CameraPipeline::~CameraPipeline()
{
    gst_element_set_state(m_pipeline.get(), GST_STATE_NULL); // no call of ours runs any more then
}

/// Takes `element`, which may be null.
GstElement* CameraPipeline::add(GstElement* element)
{
    if (element)
        gst_bin_add(GST_BIN(m_pipeline.get()), element);
    return element;
}

GstElement* CameraPipeline::add(const char* kind)
{
    return add(gst_element_factory_make(kind, nullptr));
}

std::vector<GstElement*> CameraPipeline::source(GstDevice& device, Way way)
{
    std::vector<GstElement*> chain{add(gst_device_create_element(&device, nullptr))};
    switch (way) {
    case Way::BestFormat: {
        const Gst::Owner<GstCaps> offered(gst_device_get_caps(&device));
        if (const Gst::Owner<GstCaps> format = CameraFormat::bestOf(offered.get())) {
            chain.push_back(add("capsfilter"));
            if (chain.back())
                g_object_set(chain.back(), "caps", format.get(), nullptr);
            if (CameraFormat::isCompressed(format.get()))
                chain.push_back(add("jpegdec"));
        }
        break;
    }
    case Way::AnyFormat:
        chain.push_back(add("decodebin"));
        break;
    }
    return chain;
}

bool CameraPipeline::build(GstDevice& device, Way way)
{
    const std::vector<GstElement*> camera = source(device, way);
    const std::vector<GstElement*> rest{add("videoconvert"), addSink(way)};
    const auto isWhole = [](const std::vector<GstElement*>& chain) {
        for (std::size_t i = 0; i < chain.size(); ++i) {
            if (!chain[i] || (i > 0 && !gst_element_link(chain[i - 1], chain[i])))
                return false;
        }
        return true;
    };
    if (!isWhole(camera) || !isWhole(rest))
        return false;
    switch (way) {
    case Way::BestFormat:
        return gst_element_link(camera.back(), rest.front()) != FALSE;
    case Way::AnyFormat: // a decoder has nothing to link before it has seen what comes
        g_signal_connect(camera.back(), "pad-added", G_CALLBACK(padAdded), rest.front());
        return true;
    }
    Q_UNREACHABLE();
}

void CameraPipeline::padAdded(GstElement*, GstPad* pad, gpointer next)
{
    const Gst::Owner<GstPad> into(
        gst_element_get_static_pad(static_cast<GstElement*>(next), "sink"));
    if (!gst_pad_is_linked(into.get()))
        gst_pad_link(pad, into.get());
}

GstElement* CameraPipeline::addSink(Way way)
{
    GstElement* const element = add("appsink");
    if (!element)
        return nullptr;
    auto* const sink = GST_APP_SINK(element);
    const Gst::Owner<GstCaps> wanted(gst_caps_from_string(readable));
    switch (way) {
    case Way::BestFormat:
        break;
    case Way::AnyFormat: { // what lies on the graphics card can often be read, if slowly
        GstCaps* const elsewhere = gst_caps_copy(wanted.get());
        gst_caps_set_features_simple(elsewhere, gst_caps_features_new("memory:DMABuf", nullptr));
        gst_caps_append(wanted.get(), elsewhere);
        break;
    }
    }
    gst_app_sink_set_caps(sink, wanted.get());
    gst_app_sink_set_max_buffers(sink, 1);
    gst_app_sink_set_drop(sink, TRUE);
    g_object_set(sink, "sync", FALSE, nullptr); // at once
    GstAppSinkCallbacks callbacks = {};
    callbacks.new_sample = newSample;
    gst_app_sink_set_callbacks(sink, &callbacks, this, nullptr);
    return element;
}

GstFlowReturn CameraPipeline::newSample(GstAppSink* sink, gpointer self)
{
    if (const Gst::Owner<GstSample> sample{gst_app_sink_pull_sample(sink)})
        static_cast<CameraPipeline*>(self)->take(*sample);
    return GST_FLOW_OK;
}

void CameraPipeline::take(GstSample& sample)
{
    GstVideoInfo info;
    GstVideoFrame mapped;
    GstBuffer* const buffer = gst_sample_get_buffer(&sample);
    const GstCaps* const caps = gst_sample_get_caps(&sample);
    if (!buffer || !caps || !gst_video_info_from_caps(&info, caps) ||
        !gst_video_frame_map(&mapped, &info, buffer, GST_MAP_READ))
        return;
    CameraFrame frame;
    frame.format = formatOf(GST_VIDEO_FRAME_FORMAT(&mapped));
    frame.size = {GST_VIDEO_FRAME_WIDTH(&mapped), GST_VIDEO_FRAME_HEIGHT(&mapped)};
    frame.isFullRange = info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255;
    frame.isBt709 = info.colorimetry.matrix == GST_VIDEO_COLOR_MATRIX_BT709;
    for (guint i = 0; i < GST_VIDEO_FRAME_N_PLANES(&mapped) && i < frame.planes.size(); ++i) {
        frame.planes[i] = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, i));
        frame.strides[i] = GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, i);
    }
    const QImage picture = m_scaler.square(frame, m_side);
    gst_video_frame_unmap(&mapped);
    if (!picture.isNull())
        m_show(picture);
}

bool CameraPipeline::hasEnded() const
{
    const Gst::Owner<GstBus> bus(gst_element_get_bus(m_pipeline.get()));
    const auto endings = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS);
    return Gst::Owner<GstMessage>(gst_bus_pop_filtered(bus.get(), endings)) != nullptr;
}
