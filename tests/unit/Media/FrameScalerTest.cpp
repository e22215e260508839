#include "Media/GStreamer/FrameScaler.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

/// A frame of 64 x 32 pixels: the 16 on the left and on the right are of one colour, between them
/// the left half is of another and the right half of a third.
struct Frame {
    static constexpr int width = 64, height = 32;

    CameraFrame frame;
    std::vector<std::uint8_t> bytes;
};

constexpr int placeOf(int x)
{
    return x < 16 || x >= 48 ? 0 : x < 32 ? 1 : 2;
}

struct Ycc {
    std::uint8_t y, u, v;
};
constexpr Ycc edge{16, 128, 128}, red{82, 90, 240}, blue{41, 240, 110}; // BT.601, as broadcast

Ycc colorAt(int x)
{
    return std::array{edge, red, blue}[static_cast<std::size_t>(placeOf(x))];
}

Frame packed()
{
    Frame made;
    for (int y = 0; y < Frame::height; ++y) {
        for (int x = 0; x < Frame::width; x += 2) {
            const Ycc c = colorAt(x);
            made.bytes.insert(made.bytes.end(), {c.y, c.u, c.y, c.v});
        }
    }
    made.frame.format = AV_PIX_FMT_YUYV422;
    made.frame.planes[0] = made.bytes.data();
    made.frame.strides[0] = 2 * Frame::width;
    return made;
}

Frame planar(bool isInterleaved)
{
    Frame made;
    for (int y = 0; y < Frame::height; ++y) {
        for (int x = 0; x < Frame::width; ++x)
            made.bytes.push_back(colorAt(x).y);
    }
    const std::size_t second = made.bytes.size();
    for (int plane = 0; plane < (isInterleaved ? 1 : 2); ++plane) {
        for (int y = 0; y < Frame::height; y += 2) {
            for (int x = 0; x < Frame::width; x += 2) {
                const Ycc c = colorAt(x);
                if (isInterleaved)
                    made.bytes.insert(made.bytes.end(), {c.u, c.v});
                else
                    made.bytes.push_back(plane == 0 ? c.u : c.v);
            }
        }
    }
    const std::uint8_t* const data = made.bytes.data();
    made.frame.format = isInterleaved ? AV_PIX_FMT_NV12 : AV_PIX_FMT_YUV420P;
    made.frame.planes = {data, data + second};
    made.frame.strides = {Frame::width, isInterleaved ? Frame::width : Frame::width / 2};
    if (!isInterleaved) {
        made.frame.planes[2] = data + second + second / 4;
        made.frame.strides[2] = Frame::width / 2;
    }
    return made;
}

Frame ofRgb()
{
    Frame made;
    for (int i = 0; i < Frame::width * Frame::height; ++i) {
        const std::uint8_t isRed = placeOf(i % Frame::width) == 1 ? 255 : 0;
        const std::uint8_t isBlue = placeOf(i % Frame::width) == 2 ? 255 : 0;
        made.bytes.insert(made.bytes.end(), {isBlue, 0, isRed, 0});
    }
    made.frame.format = AV_PIX_FMT_BGR0;
    made.frame.planes[0] = made.bytes.data();
    made.frame.strides[0] = 4 * Frame::width;
    return made;
}

bool isNear(QRgb pixel, QColor color)
{
    const QColor is(pixel);
    return std::abs(is.red() - color.red()) < 12 && std::abs(is.green() - color.green()) < 12 &&
           std::abs(is.blue() - color.blue()) < 12 && qAlpha(pixel) == 255;
}

} // namespace

TEST(FrameScaler, MakesASquareOfTheMiddleInItsColours)
{
    FrameScaler scaler; // one for all, as when a camera changes
    for (const Frame& made : {packed(), planar(true), planar(false), ofRgb()}) {
        CameraFrame frame = made.frame;
        frame.size = {Frame::width, Frame::height};
        for (const int side : {16, 32, 50}) {
            SCOPED_TRACE(testing::Message() << frame.format << " at " << side);
            const QImage picture = scaler.square(frame, side);
            ASSERT_EQ(picture.size(), QSize(side, side));
            for (const int y : {1, side / 2, side - 2}) {
                EXPECT_TRUE(isNear(picture.pixel(1, y), Qt::red));
                EXPECT_TRUE(isNear(picture.pixel(side / 2 - 4, y), Qt::red));
                EXPECT_TRUE(isNear(picture.pixel(side / 2 + 4, y), Qt::blue));
                EXPECT_TRUE(isNear(picture.pixel(side - 2, y), Qt::blue));
            }
        }
    }
}

TEST(FrameScaler, KnowsTheRangeAndTheStandardOfColours)
{
    const std::vector<std::uint8_t> grey(16 * 16 * 2, 128);
    CameraFrame frame;
    frame.format = AV_PIX_FMT_YUYV422;
    frame.size = {16, 16};
    frame.planes[0] = grey.data();
    frame.strides[0] = 32;
    FrameScaler scaler;
    EXPECT_NEAR(qRed(scaler.square(frame, 8).pixel(4, 4)), 130, 1);
    frame.isFullRange = true;
    EXPECT_NEAR(qRed(scaler.square(frame, 8).pixel(4, 4)), 128, 1);

    const Frame colours = packed();
    frame = colours.frame;
    frame.size = {Frame::width, Frame::height};
    frame.isBt709 = true;
    EXPECT_GT(qRed(scaler.square(frame, 32).pixel(4, 4)), 240);
    EXPECT_GT(qGreen(scaler.square(frame, 32).pixel(4, 4)), 12);
}

TEST(FrameScaler, OfWhatCannotBeReadIsNothing)
{
    FrameScaler scaler;
    CameraFrame frame;
    frame.size = {64, 64};
    EXPECT_TRUE(scaler.square(frame, 20).isNull());
    const Frame colours = packed();
    frame = colours.frame;
    EXPECT_TRUE(scaler.square(frame, 20).isNull()) << "without a size";
    frame.size = {Frame::width, Frame::height};
    EXPECT_TRUE(scaler.square(frame, 0).isNull());
    EXPECT_FALSE(scaler.square(frame, 20).isNull());
}
