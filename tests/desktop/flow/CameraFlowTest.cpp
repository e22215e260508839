// The camera bubble, with a camera that PipeWire knows: what the user sees of it, and the film.

#include "desktop/flow/CameraBubble.h"
#include "desktop/flow/FlowTest.h"
#include "desktop/flow/RecordingHands.h"
#include "support/VirtualCamera.h"

#include <QFile>

#include <csignal>

#include <unistd.h>

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

    /// Writes one that runs the program where there is a camera that it may not open.
    void writeScript(const QString& path) const
    {
        const QString devices = desktop->home() + QStringLiteral("/dev");
        QString script = QStringLiteral("#!/bin/sh\nexec unshare --mount %1 sh -ec '\n")
                             .arg(geteuid() == 0 ? QString() : QStringLiteral("--map-root-user"));
        script += QStringLiteral("mkdir \"%1\" \"%1/shm\"\n").arg(devices);
        script += QStringLiteral("for name in null zero random urandom; do\n"
                                 "touch \"%1/$name\"\n"
                                 "mount --bind \"/dev/$name\" \"%1/$name\"\n"
                                 "done\n")
                      .arg(devices);
        script += QStringLiteral("mount --bind /dev/shm \"%1/shm\"\n"
                                 "ln -s /proc/self/fd \"%1/fd\"\n"
                                 "install -m 0 /dev/null \"%1/video0\"\n"
                                 "mount --rbind \"%1\" /dev\n")
                      .arg(devices);
        // Without these the administrator, too, is refused what others are.
        script += QStringLiteral("exec setpriv --bounding-set=-dac_override,-dac_read_search "
                                 "\"%1\"'\n")
                      .arg(QStringLiteral(TAMRIK_PROGRAM));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(script.toUtf8()), script.toUtf8().size());
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

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
    // To be asked again before it knows the first answer calls that off, so ask until it is known.
    const auto asked = waitFor(QStringLiteral("the bubble"), [&]() -> Desktop::Outcome<void> {
        const auto again = bubble().toggle();
        return again ? bubble().awaitShown(true, 4s) : again;
    });
    ASSERT_TRUE(succeeded(asked));
    ASSERT_TRUE(succeeded(bubble().awaitPicture()));
    camera->unplug();
    ASSERT_TRUE(succeeded(bubble().awaitNoPicture()));
    camera->plugIn();
    ASSERT_TRUE(succeeded(bubble().awaitPicture()));
    camera->restartServer();
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

TEST_F(CameraFlow, AServerThatHangsKeepsNothingElseWaiting)
{
    ASSERT_NO_FATAL_FAILURE(beginWith({}, VirtualCamera::State::PluggedIn));
    camera->freeze();
    ASSERT_TRUE(succeeded(bubble().toggle())); // on its way, as long as that takes
    ASSERT_TRUE(succeeded(bubble().toggle())); // the menu works meanwhile
    ASSERT_TRUE(succeeded(tamrik->app().signal(SIGTERM)));
    const auto ended = tamrik->app().waitForExit();
    camera->thaw();
    ASSERT_TRUE(succeeded(ended));
    EXPECT_EQ(*ended, (Exit{0, false}));
    EXPECT_EQ(tamrik->app().errorOutput(), QString());
    tamrik.reset();
}

TEST_F(CameraFlow, ARefusedCameraIsSaidEachTimeAndHasNoBubble)
{
    ASSERT_NO_FATAL_FAILURE(begin({}));
    ASSERT_TRUE(succeeded(tamrik->app().stop()));
    const QString program = desktop->home() + QStringLiteral("/without-rights");
    ASSERT_NO_FATAL_FAILURE(writeScript(program));
    auto launched = Tamrik::startAndAwaitKeys(*desktop, program);
    ASSERT_TRUE(succeeded(launched));
    tamrik = std::move(*launched);
    QString said;
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(succeeded(bubble().toggle()));
        said += QStringLiteral("Tamrik: camera access denied — System Settings → "
                               "Privacy & Security → Camera\n");
        ASSERT_TRUE(succeeded(tamrik->app().awaitErrorOutput(said)));
        EXPECT_FALSE(bubble().isShown());
    }
    ASSERT_TRUE(succeeded(tamrik->app().stop()));
    EXPECT_EQ(tamrik->app().errorOutput(), said);
    tamrik.reset();
}

INSTANTIATE_TEST_SUITE_P(Cameras, CameraFlowOn,
                         testing::Values(DesktopCase{"Openbox", {}},
                                         DesktopCase{"UncompositedScaleTwo",
                                                     {.scale = 2, .compositor = Compositor::None}}),
                         nameOf);
