#pragma once

#include "Media/GStreamer/FrameScaler.h"
#include "Media/GStreamer/Handles.h"

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include <gst/app/gstappsink.h>

/// A camera at work, until this object goes.
class CameraPipeline {
public:
    using Show = std::function<void(const QImage& picture)>;

    /// How a camera is asked for pictures.
    enum class Way {
        BestFormat, ///< in the format that costs least, of those that it offers
        AnyFormat,  ///< in whatever it then sends, decoded: some offer what they do not have
    };

    /// Null when it cannot be begun. Pictures are `side` pixels high and wide; `side` outlives
    /// this. `show` is called for each of them on a thread of the pipeline's. What comes while it
    /// works is left out but for the newest.
    static std::unique_ptr<CameraPipeline> start(GstDevice& device, Way way,
                                                 const std::atomic<int>& side, Show show);
    ~CameraPipeline();
    CameraPipeline(const CameraPipeline&) = delete;
    CameraPipeline& operator=(const CameraPipeline&) = delete;

    /// Whether it has said that nothing more will come.
    bool hasEnded() const;

private:
    CameraPipeline(const std::atomic<int>& side, Show show);
    bool build(GstDevice& device, Way way);
    GstElement* add(const char* kind);
    GstElement* add(GstElement* element);
    /// All that comes before the picture's conversion, in order; null for what does not exist.
    std::vector<GstElement*> source(GstDevice& device, Way way);
    GstElement* addSink(Way way);
    static void padAdded(GstElement* decoder, GstPad* pad, gpointer next);
    void take(GstSample& sample);
    static GstFlowReturn newSample(GstAppSink* sink, gpointer self);

    const std::atomic<int>& m_side;
    Show m_show;
    FrameScaler m_scaler;
    Gst::Owner<GstElement> m_pipeline;
};
