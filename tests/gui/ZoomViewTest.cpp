#include "Editor/ZoomView.h"
#include "Editor/CanvasView.h"
#include "fakes/FakePlatform.h"
#include "support/EventLoop.h"

#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace {

QImage white()
{
    QImage image(1600, 1200, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

class ZoomViewTest : public testing::Test {
protected:
    ZoomViewTest()
    {
        FakePlatform::reset();
        view.resize(400, 300);
        view.show();
        settle();
    }

    /// Where on the picture a place in the view is, at any magnification.
    QPointF shownAt(QPointF place) const
    {
        return canvas->mapFrom(&view, place) / view.magnification();
    }

    void pinch(Qt::NativeGestureType type, QPointF place, double value = 0)
    {
        const QPointF onCanvas = canvas->mapFrom(&view, place);
        QNativeGestureEvent event(type, QPointingDevice::primaryPointingDevice(), 2, onCanvas,
                                  onCanvas, view.mapToGlobal(place), value, {});
        QCoreApplication::sendEvent(canvas, &event);
    }

    void wheel(QPoint pixels, QPoint angle, Qt::KeyboardModifiers keys, QPointF place)
    {
        QWheelEvent event(canvas->mapFrom(&view, place), view.mapToGlobal(place), pixels, angle, {},
                          keys, Qt::NoScrollPhase, false);
        // As from the user: what programs send stays with the widget.
        QSpontaneKeyEvent::setSpontaneous(&event);
        QCoreApplication::instance()->notify(canvas, &event);
    }

    QPoint scrolled() const
    {
        return {view.horizontalScrollBar()->value(), view.verticalScrollBar()->value()};
    }

    CanvasView* canvas = new CanvasView(BaseImage::ofDensity(white(), 1), {});
    ZoomView view{canvas};
};

/// From black, 0, to white, 1.
double brightness(QWidget& widget)
{
    const QImage image = widget.grab().toImage();
    return image.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .pixelColor(0, 0)
        .lightnessF();
}

void expectNear(QPointF a, QPointF b, double distance)
{
    EXPECT_NEAR(a.x(), b.x(), distance);
    EXPECT_NEAR(a.y(), b.y(), distance);
}

} // namespace

TEST_F(ZoomViewTest, FingersOnATouchPadZoomAboutWhereTheyAre)
{
    view.setMagnification(1);
    const QPointF fingers(310, 70);
    const QPointF held = shownAt(fingers);
    pinch(Qt::BeginNativeGesture, fingers);
    for (int step = 0; step < 40; ++step)
        pinch(Qt::ZoomNativeGesture, fingers, 0.03);
    EXPECT_NEAR(view.magnification(), std::pow(1.03, 40), 1e-9);
    expectNear(shownAt(fingers), held, 1 / view.magnification());
    for (int step = 0; step < 40; ++step)
        pinch(Qt::ZoomNativeGesture, fingers, -0.02);
    expectNear(shownAt(fingers), held, 1 / view.magnification());
    pinch(Qt::EndNativeGesture, fingers);
    // The next time others are held.
    const QPointF elsewhere(50, 200);
    const QPointF next = shownAt(elsewhere);
    pinch(Qt::ZoomNativeGesture, elsewhere, 0.1);
    expectNear(shownAt(elsewhere), next, 1 / view.magnification());
}

TEST_F(ZoomViewTest, FingersZoomWithinTheLimits)
{
    for (int step = 0; step < 20; ++step)
        pinch(Qt::ZoomNativeGesture, {100, 100}, 0.5);
    EXPECT_EQ(view.magnification(), 8);
    for (int step = 0; step < 20; ++step)
        pinch(Qt::ZoomNativeGesture, {100, 100}, -0.5);
    EXPECT_EQ(view.magnification(), 0.15);
}

TEST_F(ZoomViewTest, FingersOnATouchScreenZoomAndPanAndDrawNothing)
{
    view.setMagnification(1);
    view.horizontalScrollBar()->setValue(500);
    view.verticalScrollBar()->setValue(400);
    const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    const QPointF held = shownAt({200, 150});
    const auto at = [this](int x, int y) { return canvas->mapFrom(&view, QPoint(x, y)); };
    QTest::touchEvent(canvas, screen.get()).press(0, at(150, 150), canvas);
    QTest::mousePress(canvas, Qt::LeftButton, {}, at(140, 140)); // as Qt has it of a lone finger
    QTest::mouseMove(canvas, at(150, 150));
    QTest::touchEvent(canvas, screen.get())
        .move(0, at(150, 150), canvas)
        .press(1, at(250, 150), canvas);
    // Twice as far apart, and 30 to the right and 20 down.
    for (int step = 1; step <= 10; ++step) {
        const QPoint first = at(150 - 5 * step + 3 * step, 150 + 2 * step);
        const QPoint second = at(250 + 5 * step + 3 * step, 150 + 2 * step);
        QTest::touchEvent(canvas, screen.get()).move(0, first, canvas).move(1, second, canvas);
    }
    EXPECT_GT(view.magnification(), 1.7);
    expectNear(shownAt({230, 170}), held, 2);
    QTest::touchEvent(canvas, screen.get())
        .release(0, at(130, 170), canvas)
        .release(1, at(330, 170), canvas);
    QTest::mouseRelease(canvas, Qt::LeftButton, {}, at(130, 170));
    EXPECT_TRUE(canvas->model().annotations().isEmpty());
}

TEST_F(ZoomViewTest, TheFirstOfTwoFingersDoesNothingWithAnyTool)
{
    view.setMagnification(1);
    const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    const auto at = [this](int x, int y) { return canvas->mapFrom(&view, QPoint(x, y)); };
    CanvasModel& model = canvas->model();
    const QPoint mark = at(150, 150);
    model.setTool(EditorTool::counter);
    QTest::mouseClick(canvas, Qt::LeftButton, {}, mark);
    const QList<Annotation> before = model.annotations();
    ASSERT_EQ(before.size(), 1);
    for (const EditorTool tool : {EditorTool::select, EditorTool::counter, EditorTool::text}) {
        SCOPED_TRACE(static_cast<int>(tool));
        model.setTool(tool);
        // Qt makes a mouse of a lone finger.
        QTest::touchEvent(canvas, screen.get()).press(0, mark, canvas);
        QTest::touchEvent(canvas, screen.get()).move(0, mark + QPoint(4, 4), canvas);
        const bool isDone =
            tool == EditorTool::text || model.selectedID() || model.annotations() != before;
        EXPECT_TRUE(isDone);
        EXPECT_EQ(canvas->isTyping(), tool == EditorTool::text);
        const QPoint other = mark + QPoint(100, 0);
        QTest::touchEvent(canvas, screen.get()).move(0, mark, canvas).press(1, other, canvas);
        for (int step = 1; step <= 5; ++step) {
            QTest::touchEvent(canvas, screen.get())
                .move(0, mark - QPoint(5 * step, 0), canvas)
                .move(1, other + QPoint(5 * step, 0), canvas);
        }
        EXPECT_GT(view.magnification(), 1);
        QTest::touchEvent(canvas, screen.get()).release(1, other, canvas).move(0, mark, canvas);
        QTest::touchEvent(canvas, screen.get()).release(0, mark, canvas);
        EXPECT_TRUE(model.annotations() == before);
        EXPECT_FALSE(model.selectedID());
        EXPECT_FALSE(canvas->isTyping());
        view.setMagnification(1);
        view.horizontalScrollBar()->setValue(0);
        view.verticalScrollBar()->setValue(0);
        settle();
    }
    // A label that is being typed stays when fingers zoom that pressed nothing else.
    model.setTool(EditorTool::text);
    QTest::mouseClick(canvas, Qt::LeftButton, {}, mark);
    canvas->cancelPress();
    EXPECT_TRUE(canvas->isTyping());
}

TEST_F(ZoomViewTest, TheWheelWithControlZoomsAboutThePointer)
{
    view.setMagnification(1);
    const QPointF pointer(90, 220);
    const QPointF held = shownAt(pointer);
    wheel({}, {0, 120}, Qt::ControlModifier, pointer);
    EXPECT_GT(view.magnification(), 1.15);
    expectNear(shownAt(pointer), held, 1);
    wheel({}, {0, -120}, Qt::ControlModifier, pointer);
    EXPECT_NEAR(view.magnification(), 1, 1e-9);
    expectNear(shownAt(pointer), held, 1);
}

TEST_F(ZoomViewTest, ThePictureGoesWithTwoFingersAndWithTheWheel)
{
    view.setMagnification(1);
    view.horizontalScrollBar()->setValue(300);
    view.verticalScrollBar()->setValue(200);
    wheel({-30, 17}, {-60, 34}, {}, {100, 100});
    EXPECT_EQ(scrolled(), QPoint(330, 183));
    wheel({}, {0, -120}, {}, {100, 100});
    EXPECT_EQ(scrolled().x(), 330);
    EXPECT_GT(scrolled().y(), 183);
    EXPECT_EQ(view.magnification(), 1);
}

TEST_F(ZoomViewTest, TheMiddleButtonMovesThePictureAndTheCursorHoldsIt)
{
    view.setMagnification(1);
    view.horizontalScrollBar()->setValue(300);
    view.verticalScrollBar()->setValue(200);
    const auto at = [this](int x, int y) { return canvas->mapFrom(&view, QPoint(x, y)); };
    QTest::mousePress(canvas, Qt::MiddleButton, {}, at(100, 100));
    EXPECT_EQ(canvas->cursor().shape(), Qt::ClosedHandCursor);
    QMouseEvent move(QEvent::MouseMove, at(80, 130), view.mapToGlobal(QPointF(80, 130)),
                     Qt::NoButton, Qt::MiddleButton, {});
    QCoreApplication::sendEvent(canvas, &move);
    EXPECT_EQ(scrolled(), QPoint(320, 170));
    QTest::mouseRelease(canvas, Qt::MiddleButton, {}, at(80, 130));
    EXPECT_EQ(canvas->cursor().shape(), Qt::CrossCursor);
    EXPECT_TRUE(canvas->model().annotations().isEmpty());
}

TEST_F(ZoomViewTest, ASmallPictureStandsInTheMiddle)
{
    view.setMagnification(0.15); // 240 x 180
    settle();
    const QPoint middle = view.viewport()->rect().center();
    expectNear(canvas->geometry().center(), middle, 1);
    // Zooming about a corner leaves it there as long as there is room.
    wheel({}, {0, 120}, Qt::ControlModifier, {90, 70});
    settle();
    expectNear(canvas->geometry().center(), middle, 1);
}

TEST_F(ZoomViewTest, ScrollBarsAreDarkOnALightDesktop)
{
    view.setMagnification(4);
    settle();
    for (QScrollBar* bar : {view.horizontalScrollBar(), view.verticalScrollBar()}) {
        ASSERT_TRUE(bar->isVisible());
        EXPECT_LT(brightness(*bar), 0.35);
        QScrollBar ordinary(bar->orientation());
        ordinary.resize(bar->size());
        EXPECT_GT(brightness(ordinary), 0.6); // the desktop is a light one
    }
}
