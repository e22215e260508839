#include "Media/GStreamer/LiveCamera.h"

#include "Media/GStreamer/Devices.h"

#include "support/EventLoop.h"
#include "unit/Media/TestCameras.h"

#include <gtest/gtest.h>

#include <mutex>

namespace {

/// Cameras whose pictures are red.
class LiveCameraTest : public testing::Test {
protected:
    LiveCameraTest() { TestCameras::startServer(); }
    ~LiveCameraTest() override { TestCameras::unplug(); }

    LiveCamera::Show show()
    {
        return [this](const QImage& picture) {
            const std::lock_guard lock(mutex);
            newest = picture;
        };
    }

    bool comes()
    {
        return runUntil([this] {
            const std::lock_guard lock(mutex);
            return !newest.isNull() && isRed(newest.pixelColor(newest.rect().center()));
        });
    }

    bool goes()
    {
        return runUntil([this] {
            const std::lock_guard lock(mutex);
            return newest.isNull();
        });
    }

    static bool isRed(const QColor& color)
    {
        return color.red() > 200 && color.green() < 50 && color.blue() < 50;
    }

    std::mutex mutex;
    QImage newest;
};

const std::string usual = "video/x-raw,format=YUY2,width=640,height=480,framerate=30/1";
const std::string red = "videotestsrc is-live=true pattern=red ! ";

} // namespace

TEST_F(LiveCameraTest, ShowsACamerasPictures)
{
    TestCameras::plugIn(usual, red + usual);
    EXPECT_TRUE(LiveCamera::exists());
    const LiveCamera camera(120, show());
    ASSERT_TRUE(comes());
    EXPECT_EQ(newest.size(), QSize(120, 120));
}

TEST_F(LiveCameraTest, ShowsOneWhosePicturesAreCompressed)
{
    TestCameras::plugIn("image/jpeg,width=640,height=480,framerate=30/1",
                        red + "video/x-raw,format=I420,width=640,height=480,framerate=30/1 ! "
                              "jpegenc");
    const LiveCamera camera(120, show());
    EXPECT_TRUE(comes());
}

TEST_F(LiveCameraTest, ShowsOneWhosePicturesAreSmallAndCompressed)
{
    TestCameras::plugIn("image/jpeg,width=320,height=240,framerate=30/1",
                        red + "video/x-raw,format=I420,width=320,height=240,framerate=30/1 ! "
                              "jpegenc");
    const LiveCamera camera(120, show());
    EXPECT_TRUE(comes());
}

TEST_F(LiveCameraTest, ShowsOneWhosePicturesAreElsewhereThanInMemory)
{
    TestCameras::plugIn(
        "video/x-raw(memory:DMABuf),format=YUY2,width=640,height=480,framerate=30/1", red + usual);
    const LiveCamera camera(120, show());
    EXPECT_TRUE(comes());
}

TEST_F(LiveCameraTest, ShowsOneThatSendsAnotherFormatThanItOffers)
{
    TestCameras::plugIn(usual, red + "video/x-raw,format=RGB16,width=800,height=600");
    const LiveCamera camera(120, show());
    EXPECT_TRUE(comes());
}

TEST_F(LiveCameraTest, ShowsOneWhoseFormatTurnsOutToBeAnother)
{
    const std::string other = "video/x-raw,format=RGB16,width=800,height=600,framerate=30/1";
    TestCameras::plugIn(usual, red + other + " ! capssetter replace=true caps=\"" + other + "\"");
    const LiveCamera camera(120, show());
    EXPECT_TRUE(comes());
}

TEST_F(LiveCameraTest, ShowsOneThatComesLater)
{
    EXPECT_FALSE(LiveCamera::exists());
    const LiveCamera camera(120, show());
    TestCameras::plugIn(usual, red + usual);
    EXPECT_TRUE(comes());
}

TEST_F(LiveCameraTest, StartsACameraThatEndsAnewAndIsBlackMeanwhile)
{
    TestCameras::plugIn(usual, "videotestsrc is-live=true pattern=red num-buffers=3 ! " + usual);
    const LiveCamera camera(120, show());
    ASSERT_TRUE(comes());
    ASSERT_TRUE(goes());
    EXPECT_TRUE(comes());
}

TEST(Devices, KeepNothingOfACameraThatWent)
{
    EXPECT_FALSE(Devices::first());
    EXPECT_TRUE(TestCameras::forgetsACameraThatGoes());
}
