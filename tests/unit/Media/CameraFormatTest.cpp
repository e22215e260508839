#include "Media/GStreamer/CameraFormat.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// What is chosen of `offered`, in GStreamer's words; empty when nothing is.
std::string chosen(const std::string& offered)
{
    gst_init(nullptr, nullptr);
    const Gst::Owner<GstCaps> all(gst_caps_from_string(offered.c_str()));
    const Gst::Owner<GstCaps> best = CameraFormat::bestOf(all.get());
    if (!best)
        return {};
    gchar* const text = gst_caps_to_string(best.get());
    std::string result = text;
    g_free(text);
    return result;
}

const std::string small = "video/x-raw, width=320, height=240, framerate=30/1;";
const std::string fit = "video/x-raw, width=640, height=480, framerate={ 15/1, 30/1, 60/1 };";
const std::string large = "video/x-raw, width=1280, height=720, framerate=[ 1/1, 60/1 ];";
const std::string slow = "video/x-raw, width=640, height=480, framerate=10/1;";
const std::string packed = "image/jpeg, width=640, height=480, framerate=30/1;";

} // namespace

TEST(CameraFormat, IsTheSmallestThatIsLargeAndFastEnough)
{
    const std::string best =
        "video/x-raw, width=(int)640, height=(int)480, framerate=(fraction)30/1";
    EXPECT_EQ(chosen(small + fit + large), best);
    EXPECT_EQ(chosen(large + fit + small), best);
    EXPECT_EQ(chosen(slow + large),
              "video/x-raw, width=(int)1280, height=(int)720, framerate=(fraction)30/1");
}

TEST(CameraFormat, IsRatherNotCompressed)
{
    EXPECT_EQ(chosen(packed + fit).substr(0, 11), "video/x-raw");
    EXPECT_EQ(chosen(slow + packed).substr(0, 10), "image/jpeg");
    const Gst::Owner<GstCaps> jpeg(gst_caps_from_string(packed.c_str()));
    const Gst::Owner<GstCaps> raw(gst_caps_from_string(fit.c_str()));
    EXPECT_TRUE(CameraFormat::isCompressed(jpeg.get()));
    EXPECT_FALSE(CameraFormat::isCompressed(raw.get()));
}

TEST(CameraFormat, IsOneWhosePicturesLieInMemory)
{
    const std::string elsewhere =
        "video/x-raw(memory:DMABuf), width=640, height=480, framerate=30/1;";
    EXPECT_EQ(chosen(elsewhere + large),
              "video/x-raw, width=(int)1280, height=(int)720, framerate=(fraction)30/1");
    EXPECT_EQ(chosen(elsewhere), "");
}

TEST(CameraFormat, IsLeftToTheCameraWhenNoneIsGoodEnough)
{
    EXPECT_EQ(chosen(small + slow), "");
    EXPECT_EQ(chosen("video/x-raw, width=[ 1, 4096 ], height=[ 1, 4096 ];"), "");
    EXPECT_FALSE(CameraFormat::bestOf(nullptr));
}
