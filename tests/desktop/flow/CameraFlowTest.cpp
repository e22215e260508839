// The camera bubble, with a camera that PipeWire knows: what the user sees of it, and the film.

#include "desktop/flow/CameraBubble.h"
#include "desktop/flow/FlowTest.h"
#include "desktop/flow/RecordingHands.h"
#include "support/VirtualCamera.h"

#include <csignal>

using namespace Desktop;
using namespace std::chrono_literals;

namespace {

class CameraFlow : public FlowTest {
protected:
    void beginWith(const Options& options, VirtualCamera::State state)
    {
        ASSERT_NO_FATAL_FAILURE(begin(options));
        camera = std::make_unique<VirtualCamera>(
            desktop->environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")).toStdString(),
            state);
        ASSERT_TRUE(succeeded(tamrik->app().stop()));
        auto launched = Tamrik::startAndAwaitKeys(
            *desktop, QStringLiteral(TAMRIK_PROGRAM),
            {{QStringLiteral("PIPEWIRE_RUNTIME_DIR"), QString::fromStdString(camera->folder())}});
        ASSERT_TRUE(succeeded(launched));
        tamrik = std::move(*launched);
    }

    CameraBubble bubble() const { return {*desktop, *tamrik}; }

    std::unique_ptr<VirtualCamera> camera;
};

class CameraFlowOn : public CameraFlow, public testing::WithParamInterface<DesktopCase> {};

} // namespace

TEST_P(CameraFlowOn, TheBubbleIsARoundMirrorThatCanBeMovedAndIsInTheFilm)
{
    ASSERT_NO_FATAL_FAILURE(beginWith(GetParam().options, VirtualCamera::State::PluggedIn));
    const std::uint32_t focused = windows().focused();
    ASSERT_TRUE(succeeded(bubble().toggle()));
    ASSERT_TRUE(succeeded(bubble().awaitShown(true)));
    ASSERT_TRUE(succeeded(bubble().awaitPicture()));
    const QRect place = bubble().circle();
    EXPECT_EQ(place.size(), QSize(qRound(200 * scale()), qRound(200 * scale())));
    EXPECT_EQ(desktop->options().size.width() - place.right() - 1, qRound(24 * scale()));
    EXPECT_EQ(windows().focused(), focused);
    const auto border = screen().pixel({place.center().x(), place.top() + qRound(scale())});
    ASSERT_TRUE(succeeded(border));
    EXPECT_TRUE(isNearly(*border, QColor(0x4C5058), 4));

    // Not by its square's corner, where a press is not on it.
    const QPoint outside = bubble().at(0.1, 0.1);
    ASSERT_TRUE(succeeded(input().drag(outside, outside - QPoint(90, 60))));
    EXPECT_EQ(bubble().circle(), place);
    // By its middle, to a place in the rectangle that is filmed.
    const QPoint to = area().center();
    ASSERT_TRUE(succeeded(input().drag(place.center(), to)));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the bubble there"), [&] {
        const QPoint off = bubble().circle().center() - to;
        return std::abs(off.x()) <= 2 && std::abs(off.y()) <= 2;
    })));
    EXPECT_EQ(windows().focused(), focused);

    ASSERT_TRUE(succeeded(tamrik->pressRecordKey()));
    const QRect filmed = bubble().circle().adjusted(-40, -40, 40, 40);
    ASSERT_TRUE(succeeded(dragOut(filmed)));
    ASSERT_TRUE(succeeded(awaitRecordButton(*desktop, filmed)));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    const auto controls = RecordingControls::await(*desktop, *tamrik);
    ASSERT_TRUE(succeeded(controls));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("a film"), [&] {
        return temporaryFiles(*desktop).filter(QStringLiteral(".mov")).size() == 1;
    })));
    ASSERT_TRUE(succeeded(controls->click(RecordingControls::Control::Stop)));
    ASSERT_TRUE(succeeded(tamrik->awaitChips(1)));
    const auto frame = Film::lastFrame(tamrik->captures().front());
    ASSERT_TRUE(succeeded(frame));
    for (const CameraBubble::Bar& bar : CameraBubble::bars()) {
        const QPoint inFilm = bubble().at(bar.x, CameraBubble::barsY) - filmed.topLeft();
        EXPECT_TRUE(isNearly(frame->pixelColor(inFilm), bar.color, 40)) << bar.x;
    }

    ASSERT_TRUE(succeeded(bubble().toggle()));
    EXPECT_TRUE(succeeded(bubble().awaitShown(false)));
}

TEST_F(CameraFlow, ComesAndGoesWithTheCameraAndEndsWithTheProgramWithoutAWord)
{
    ASSERT_NO_FATAL_FAILURE(beginWith({}, VirtualCamera::State::Unplugged));
    ASSERT_TRUE(succeeded(bubble().toggle()));
    camera->plugIn();
    EXPECT_FALSE(bubble().isShown());
    // To be asked again before it knows the first answer changes nothing, so ask until it is known.
    const auto asked = waitFor(QStringLiteral("the bubble"), [&]() -> Desktop::Outcome<void> {
        const auto again = bubble().toggle();
        return again ? bubble().awaitShown(true, 2s) : again;
    });
    ASSERT_TRUE(succeeded(asked));
    ASSERT_TRUE(succeeded(bubble().awaitPicture()));
    camera->unplug();
    ASSERT_TRUE(succeeded(bubble().awaitNoPicture()));
    camera->plugIn();
    ASSERT_TRUE(succeeded(bubble().awaitPicture()));
    ASSERT_TRUE(succeeded(tamrik->app().signal(SIGTERM)));
    const auto ended = tamrik->app().waitForExit();
    ASSERT_TRUE(succeeded(ended));
    EXPECT_EQ(*ended, (Exit{0, false}));
    EXPECT_EQ(tamrik->app().errorOutput(), QString());
    tamrik.reset();
}

INSTANTIATE_TEST_SUITE_P(Cameras, CameraFlowOn,
                         testing::Values(DesktopCase{"Openbox", {}},
                                         DesktopCase{"UncompositedScaleTwo",
                                                     {.scale = 2, .compositor = Compositor::None}}),
                         nameOf);
