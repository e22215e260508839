// The camera bubble, with a camera that PipeWire knows: what the user sees of it, and the film.

#include "desktop/flow/FlowTest.h"
#include "desktop/flow/RecordingHands.h"
#include "desktop/harness/TrayIcon.h"
#include "support/VirtualCamera.h"

#include <csignal>

using namespace Desktop;
using namespace std::chrono_literals;

namespace {

/// A camera that is gone is noticed after some seconds.
constexpr auto unplugPatience = patience + 10s;

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

    /// Chooses "Camera Bubble" in the menu.
    void toggle()
    {
        const auto icon = awaitTrayIcon(*desktop, tamrik->app().pid());
        ASSERT_TRUE(succeeded(icon));
        ASSERT_TRUE(succeeded(input().click(icon->center())));
        ASSERT_TRUE(succeeded(tamrik->awaitMenu()));
        // From the end: Quit, Launch at Login, Thumbnail Position, Record Microphone Audio.
        for (int i = 0; i < 5; ++i)
            ASSERT_TRUE(succeeded(input().key(QStringLiteral("Up"))));
        ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
        ASSERT_TRUE(succeeded(tamrik->awaitNoMenu()));
    }

    QList<Window> bubbles() const
    {
        return windows().where([this](const Window& window) {
            return window.pid == tamrik->app().pid() && window.isViewable &&
                   window.title == QLatin1String("Tamrik Camera Bubble");
        });
    }

    /// The circle's square.
    QRect circle() const
    {
        const auto all = bubbles();
        return all.size() == 1 ? Tamrik::chipIn(all.front(), scale()) : QRect();
    }

    /// A place in the circle; both from 0 to 1, from the top left.
    QPoint at(double x, double y) const
    {
        const QRect place = circle();
        return place.topLeft() + QPoint(qRound(x * place.width()), qRound(y * place.height()));
    }

    /// Waits for the bars as in a mirror: they go from right to left.
    void awaitPicture()
    {
        ASSERT_TRUE(succeeded(screen().awaitColor(at(0.25, 0.35), magenta, 24, unplugPatience)));
        EXPECT_TRUE(succeeded(screen().awaitColor(at(0.5, 0.35), green, 24)));
        EXPECT_TRUE(succeeded(screen().awaitColor(at(0.75, 0.35), cyan, 24)));
    }

    static constexpr QColor magenta{255, 0, 255}, green{0, 255, 0}, cyan{0, 255, 255};
    std::unique_ptr<VirtualCamera> camera;
};

class CameraFlowOn : public CameraFlow, public testing::WithParamInterface<DesktopCase> {};

} // namespace

TEST_P(CameraFlowOn, TheBubbleIsARoundMirrorThatCanBeMovedAndIsInTheFilm)
{
    ASSERT_NO_FATAL_FAILURE(beginWith(GetParam().options, VirtualCamera::State::PluggedIn));
    const std::uint32_t focused = windows().focused();
    ASSERT_NO_FATAL_FAILURE(toggle());
    ASSERT_TRUE(
        succeeded(waitUntil(QStringLiteral("the bubble"), [&] { return bubbles().size() == 1; })));
    ASSERT_NO_FATAL_FAILURE(awaitPicture());
    const QRect place = circle();
    EXPECT_EQ(place.size(), QSize(qRound(200 * scale()), qRound(200 * scale())));
    EXPECT_EQ(desktop->options().size.width() - place.right() - 1, qRound(24 * scale()));
    EXPECT_EQ(windows().focused(), focused);
    const auto border = screen().pixel({place.center().x(), place.top() + qRound(scale())});
    ASSERT_TRUE(succeeded(border));
    EXPECT_TRUE(isNearly(*border, QColor(0x4C5058), 4));

    // Not by its square's corner, where a press is not on it.
    const QPoint outside = at(0.1, 0.1);
    ASSERT_TRUE(succeeded(input().drag(outside, outside - QPoint(90, 60))));
    EXPECT_EQ(circle(), place);
    // By its middle, to a place in the rectangle that is filmed.
    const QPoint to = area().center();
    ASSERT_TRUE(succeeded(input().drag(place.center(), to)));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the bubble there"), [&] {
        const QPoint off = circle().center() - to;
        return std::abs(off.x()) <= 2 && std::abs(off.y()) <= 2;
    })));
    EXPECT_EQ(windows().focused(), focused);

    ASSERT_TRUE(succeeded(tamrik->pressRecordKey()));
    const QRect filmed = circle().adjusted(-40, -40, 40, 40);
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
    for (const auto& [x, color] : {std::pair{0.25, magenta}, {0.5, green}, {0.75, cyan}}) {
        const QPoint inFilm = at(x, 0.35) - filmed.topLeft();
        EXPECT_TRUE(isNearly(frame->pixelColor(inFilm), color, 40)) << x;
    }

    ASSERT_NO_FATAL_FAILURE(toggle());
    EXPECT_TRUE(succeeded(
        waitUntil(QStringLiteral("the bubble to go"), [&] { return bubbles().isEmpty(); })));
}

TEST_F(CameraFlow, ComesAndGoesWithTheCameraAndEndsWithTheProgramWithoutAWord)
{
    ASSERT_NO_FATAL_FAILURE(beginWith({}, VirtualCamera::State::Unplugged));
    ASSERT_NO_FATAL_FAILURE(toggle());
    camera->plugIn();
    EXPECT_TRUE(bubbles().isEmpty());
    // To be asked again before it knows the first answer changes nothing, so ask until it is known.
    const auto asked = waitFor(QStringLiteral("the bubble"), [&]() -> Desktop::Outcome<void> {
        toggle();
        return waitUntil(
            QStringLiteral("it"), [&] { return bubbles().size() == 1; }, 2s);
    });
    ASSERT_TRUE(succeeded(asked));
    ASSERT_NO_FATAL_FAILURE(awaitPicture());
    camera->unplug();
    ASSERT_TRUE(succeeded(screen().awaitColor(at(0.5, 0.35), Qt::black, 0, unplugPatience)));
    camera->plugIn();
    ASSERT_NO_FATAL_FAILURE(awaitPicture());
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
