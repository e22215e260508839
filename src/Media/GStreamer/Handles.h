#pragma once

#include <memory>

#include <gst/gst.h>

/// Owners of what GStreamer counts references to.
namespace Gst {

struct Unref {
    template <typename Object>
    void operator()(Object* object) const
    {
        gst_object_unref(object);
    }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
};

template <typename Object>
using Owner = std::unique_ptr<Object, Unref>;

} // namespace Gst
