// Whether a film shows the pixels of the screen.

#include "desktop/flow/NumberedWindow.h"
#include "desktop/flow/RecordingFlow.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <random>

using namespace Desktop;
using Control = RecordingControls::Control;

namespace {

constexpr int block = 30; // pixels
// Of the picture below:
constexpr int plainWidth = 6 * block;
constexpr int printLeft = plainWidth + block / 2; // where no colour spills over

/// Blocks of one colour each on the left; on the right the edges of small print, in greys.
QImage testPicture(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    std::mt19937 random(6);
    const auto roll = [&](std::uint32_t below) { return static_cast<int>(random() % below); };
    QList<QRgb> colours = {0xff000000, 0xffffffff, 0xffff0000, 0xff00ff00, 0xff0000ff,
                           0xffffff00, 0xff00ffff, 0xffff00ff, 0xff808080, 0xff1e1e1e};
    while (colours.size() < 36)
        colours += qRgb(roll(256), roll(256), roll(256));
    QRgb paper = 0;
    QRgb ink = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            if (x < plainWidth) {
                image.setPixel(x, y, colours[y / block * 6 + x / block]);
                continue;
            }
            if (x == plainWidth) {
                const bool isDark = y / block % 2 == 1;
                paper = isDark ? 0xff1e1e1e : 0xffffffff;
                ink = isDark ? 0xffd0d0d0 : 0xff000000;
            }
            const bool isBetween = y % 12 > 8 || x % 7 == 0; // lines and letters
            image.setPixel(x, y, isBetween || roll(2) == 0 ? paper : ink);
        }
    }
    return image;
}

double luma(QRgb colour)
{
    return 0.2126 * qRed(colour) + 0.7152 * qGreen(colour) + 0.0722 * qBlue(colour);
}

/// That a frame has the picture's pixels but for what an encoder may make of them.
void expectSamePixels(const QImage& frame, const QImage& picture)
{
    ASSERT_EQ(frame.size(), picture.size());
    int most = 0;
    double mostLuma = 0;
    double squares = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb a = frame.pixel(x, y);
            const QRgb b = picture.pixel(x, y);
            if (x >= plainWidth) {
                const double error = x < printLeft ? 0 : std::abs(luma(a) - luma(b));
                mostLuma = std::max(mostLuma, error);
                squares += error * error;
                continue;
            }
            const auto isInside = [](int place) {
                return place % block >= 8 && place % block < block - 8;
            };
            if (isInside(x) && isInside(y))
                most = std::max({most, std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                                 std::abs(qBlue(a) - qBlue(b))});
        }
    }
    const double pixels = (picture.width() - printLeft) * picture.height();
    // A step of luminance and of blue make 1.2 and 2.1 of a channel: half a step is lost in
    // rounding, and another one in the encoder.
    EXPECT_LE(most, 5);
    EXPECT_LE(mostLuma, 90); // of 255, at the edges of single pixels
    EXPECT_LE(std::sqrt(squares / pixels), 5);
}

class RecordingPixels : public RecordingFlow {
protected:
    void SetUp() override { begin({.compositor = Compositor::None}); }
};

} // namespace

TEST_F(RecordingPixels, AreThoseOfTheScreen)
{
    const auto shown = NumberedWindow::show(*desktop, area());
    ASSERT_TRUE(succeeded(shown));
    (*shown)->show(testPicture(area().size()));
    const auto before = screen().grab(area());
    ASSERT_TRUE(succeeded(before));
    ASSERT_EQ(before->convertToFormat(QImage::Format_RGB32), testPicture(area().size()));
    for (const bool isJoined : {false, true}) {
        SCOPED_TRACE(isJoined);
        ASSERT_NO_FATAL_FAILURE(select());
        ASSERT_TRUE(succeeded(input().moveTo({100, 100}))); // or it would be in the film
        ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
        ASSERT_NO_FATAL_FAILURE(awaitFilming(1));
        if (isJoined) {
            ASSERT_TRUE(succeeded(controls->click(Control::Pause)));
            ASSERT_TRUE(succeeded(awaitNoTool()));
            ASSERT_NO_FATAL_FAILURE(clickAgain());
            ASSERT_NO_FATAL_FAILURE(awaitFilming(2));
        }
        ASSERT_TRUE(succeeded(controls->click(Control::Stop)));
        const auto path = awaitFilm();
        ASSERT_TRUE(succeeded(path));
        for (const auto& frame : {Film::firstFrame(*path), Film::lastFrame(*path)}) {
            ASSERT_TRUE(succeeded(frame));
            expectSamePixels(*frame, *before);
        }
        ASSERT_TRUE(succeeded(tamrik->putChipsAway()));
        ASSERT_TRUE(QFile::remove(*path));
    }
}
