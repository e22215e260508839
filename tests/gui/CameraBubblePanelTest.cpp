#include "CameraBubblePanel.h"

#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "gui/Rendered.h"
#include "support/Printers.h"

#include <QTest>

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using Geometry::Point;
using Geometry::Rect;

namespace {

constexpr int margin = 18; // of the window around the circle

class CameraBubblePanelTest : public testing::Test {
protected:
    CameraBubblePanelTest() { FakePlatform::reset(); }

    /// What the panel was given for a camera, to play with.
    struct Camera {
        bool isRunning = false;
        int side = 0;
        QImage picture;
        std::function<void()> changed;
    };

    struct Feed : CameraFeed {
        explicit Feed(Camera& of)
            : camera(of)
        {
        }
        ~Feed() override { camera.isRunning = false; }
        QImage picture() const override { return camera.picture; }
        void setSide(int side) override { camera.side = side; }
        Camera& camera;
    };

    CameraBubblePanel& make()
    {
        panel = std::make_unique<CameraBubblePanel>(
            [this](int side, std::function<void()> changed) {
                camera = {true, side, {}, std::move(changed)};
                return std::make_unique<Feed>(camera);
            },
            clock.clock());
        panel->orderFrontRegardless();
        return *panel;
    }

    /// Red on the left, blue on the right.
    void showTwoColors()
    {
        QImage picture(camera.side, camera.side, QImage::Format_RGB32);
        picture.fill(Qt::red);
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = picture.width() / 2; x < picture.width(); ++x)
                picture.setPixelColor(x, y, Qt::blue);
        }
        camera.picture = picture;
        camera.changed();
    }

    /// In points from the circle's top left.
    QColor at(int x, int y) const
    {
        return Rendered::at(*panel, 1).pixelColor(margin + x, margin + y);
    }

    /// To within what an edge's smoothness makes of it.
    bool isNear(int x, int y, QColor color) const
    {
        const QColor is = at(x, y);
        return std::abs(is.red() - color.red()) < 8 && std::abs(is.green() - color.green()) < 8 &&
               std::abs(is.blue() - color.blue()) < 8;
    }

    FakeClock clock;
    Camera camera;
    std::unique_ptr<CameraBubblePanel> panel;
};

} // namespace

TEST_F(CameraBubblePanelTest, StandsInTheMainScreensCornerAndTakesNoKeys)
{
    make();
    EXPECT_EQ(panel->frame(), (Rect{1440 - 224, 24, 200, 200}));
    EXPECT_EQ(FakePlatform::current().frames[panel.get()], panel->frame().grown(margin));
    EXPECT_EQ(FakePlatform::current().bodies[panel.get()], QRectF(margin, margin, 200, 200));
    const auto traits = FakePlatform::current().traits[panel.get()];
    EXPECT_EQ(traits.level, Platform::WindowLevel::StatusPanel);
    EXPECT_TRUE(traits.nonActivating);
    EXPECT_TRUE(traits.translucent);
    EXPECT_EQ(FakePlatform::current().front.back(), panel.get());
}

TEST_F(CameraBubblePanelTest, StandsBesideAPanelOfTheDesktop)
{
    FakePlatform::current().screens.front().visibleFrame = {0, 40, 1300, 860};
    EXPECT_EQ(make().frame().origin(), (Point{1300 - 224, 64}));
}

TEST_F(CameraBubblePanelTest, WithoutAScreenItIsWhereTheCornerOfAUsualOneWouldBe)
{
    FakePlatform::current().screens.clear();
    EXPECT_EQ(make().frame().origin(), (Point{1216, 24}));
}

TEST_F(CameraBubblePanelTest, IsABlackDiscWithABorderUntilThereIsAPicture)
{
    make();
    EXPECT_TRUE(camera.isRunning);
    EXPECT_EQ(camera.side, 200);
    EXPECT_EQ(at(100, 100), QColor(Qt::black));
    for (const auto& [x, y] : {std::pair{100, 0}, {100, 1}, {0, 100}, {199, 100}, {100, 199}}) {
        EXPECT_TRUE(isNear(x, y, 0x4C5058)) << x << " " << y;
    }
    EXPECT_EQ(at(100, 3), QColor(Qt::black));
    EXPECT_GT(at(20, 20).lightness(), 60) << "outside the circle there is but its shadow";
    EXPECT_LT(at(100, 203).lightness(), at(100, 217).lightness()) << "which is there";
}

TEST_F(CameraBubblePanelTest, MirrorsThePicture)
{
    make();
    showTwoColors();
    EXPECT_EQ(at(60, 100), QColor(Qt::blue));
    EXPECT_EQ(at(140, 100), QColor(Qt::red));
    EXPECT_TRUE(isNear(2, 100, Qt::blue));
    EXPECT_TRUE(isNear(197, 100, Qt::red));
    EXPECT_TRUE(isNear(100, 0, 0x4C5058));
}

TEST_F(CameraBubblePanelTest, IsBlackAgainWhenThePictureIsGone)
{
    make();
    showTwoColors();
    camera.picture = {};
    camera.changed();
    EXPECT_EQ(at(60, 100), QColor(Qt::black));
}

TEST_F(CameraBubblePanelTest, StopsTheCameraWhenItIsToldToAndWhenItCloses)
{
    make();
    showTwoColors();
    panel->stopSession();
    EXPECT_FALSE(camera.isRunning);
    EXPECT_FALSE(panel->hasSession());
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(at(60, 100), QColor(Qt::black));
    camera.changed(); // on its way before
    EXPECT_EQ(at(60, 100), QColor(Qt::black));

    make();
    panel->close(); // still starting
    EXPECT_FALSE(camera.isRunning);
    EXPECT_FALSE(panel->isVisible());
    panel.reset();
    camera.changed();
}

TEST_F(CameraBubblePanelTest, IsDraggedByTheLeftButton)
{
    make();
    FakePlatform::current().mouse = {1300, 100};
    QTest::mousePress(panel.get(), Qt::LeftButton, {}, {118, 118});
    FakePlatform::current().mouse = {1000, 400};
    QTest::mouseMove(panel.get(), {119, 118});
    EXPECT_EQ(panel->frame().origin(), (Point{1216 - 300, 24 + 300}));
    FakePlatform::current().mouse = {1010, 400};
    QTest::mouseMove(panel.get(), {118, 118});
    EXPECT_EQ(panel->frame().origin(), (Point{1216 - 290, 24 + 300}));
    QTest::mouseRelease(panel.get(), Qt::LeftButton, {}, {118, 118});
    QTest::mousePress(panel.get(), Qt::RightButton, {}, {118, 118});
    FakePlatform::current().mouse = {900, 400};
    QTest::mouseMove(panel.get(), {120, 118});
    EXPECT_EQ(panel->frame().origin(), (Point{1216 - 290, 24 + 300}));
    QTest::mouseRelease(panel.get(), Qt::RightButton, {}, {118, 118});
    // A second press soon after one.
    QTest::mouseDClick(panel.get(), Qt::LeftButton, {}, {118, 118});
    QMouseEvent again(QEvent::MouseButtonDblClick, {118, 118}, {118, 118}, Qt::LeftButton,
                      Qt::LeftButton, {});
    QCoreApplication::sendEvent(panel.get(), &again);
    FakePlatform::current().mouse = {910, 400};
    QTest::mouseMove(panel.get(), {121, 118});
    EXPECT_EQ(panel->frame().origin(), (Point{1216 - 280, 24 + 300}));
}

TEST_F(CameraBubblePanelTest, ComesBackFromAScreenThatGoes)
{
    make();
    auto screens = FakePlatform::current().screens;
    screens.front().frame = screens.front().visibleFrame = {0, 0, 800, 600};
    FakePlatform::current().changeScreens(screens);
    clock.advance(200ms);
    EXPECT_EQ(panel->frame().origin(), (Point{800 - 224, 24}));
    screens.front().frame = screens.front().visibleFrame = {0, 0, 1440, 900};
    FakePlatform::current().changeScreens(screens);
    clock.advance(200ms);
    EXPECT_EQ(panel->frame().origin(), (Point{800 - 224, 24})) << "where it can be seen it stays";
}
