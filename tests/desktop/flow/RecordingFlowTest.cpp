// Recordings with the real capture tool: what the user presses, and the film that comes of it.

#include "desktop/flow/RecordingFlow.h"
#include "desktop/harness/Clipboard.h"
#include "desktop/harness/FullScreenWindow.h"
#include "desktop/harness/TrayIcon.h"
#include "support/SoundServer.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <csignal>
#include <thread>

using namespace Desktop;
using namespace std::chrono_literals;
using Control = RecordingControls::Control;

namespace {

class RecordingOn : public RecordingFlow, public testing::WithParamInterface<DesktopCase> {
protected:
    void SetUp() override { begin(GetParam().options); }
};

class Recording : public RecordingFlow {
protected:
    void SetUp() override { begin({}); }
};

/// Whether a frame shows what the screen did: it was encoded, with colours in half the pixels.
bool shows(const QImage& frame, const QImage& screen)
{
    return frame.size() == screen.size() &&
           differingPixels(frame, screen, 64) < frame.width() * frame.height() / 20;
}

} // namespace

TEST_P(RecordingOn, IsFilmedInTwoPartsAroundAPauseAndBecomesOneFileWithAChip)
{
    const std::uint32_t focused = windows().focused();
    const auto before = screen().grab(area());
    ASSERT_TRUE(succeeded(before));
    ASSERT_NO_FATAL_FAILURE(select());
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(succeeded(input().click(button)));
    ASSERT_NO_FATAL_FAILURE(awaitFilming(1));
    EXPECT_FALSE(controls->window().intersects(area()));
    EXPECT_TRUE(succeeded(awaitRedIcon(true)));
    ASSERT_TRUE(succeeded(controls->awaitPaused(false)));
    const qint64 firstAtLeast = clock.elapsed();
    ASSERT_TRUE(succeeded(controls->click(Control::Pause)));
    ASSERT_TRUE(succeeded(controls->awaitPaused(true)));
    const qint64 firstAtMost = clock.elapsed();

    // What happens meanwhile is not in the film: only that it has happened.
    auto window =
        FullScreenWindow::show(*desktop, FullScreenWindow::Kind::Managed, controls->window());
    ASSERT_TRUE(succeeded(window));
    std::this_thread::sleep_for(1s);
    const qint64 paused = clock.elapsed() - firstAtMost;

    ASSERT_TRUE(succeeded(controls->click(Control::Pause)));
    ASSERT_TRUE(succeeded(controls->awaitPaused(false)));
    ASSERT_NO_FATAL_FAILURE(awaitFilming(2));
    std::this_thread::sleep_for(300ms);
    ASSERT_TRUE(succeeded(controls->click(Control::Stop)));
    ASSERT_TRUE(succeeded(RecordingControls::awaitNone(*desktop, *tamrik)));
    const qint64 all = clock.elapsed();
    (*window).reset();

    const auto path = awaitFilm();
    ASSERT_TRUE(succeeded(path));
    EXPECT_THAT(QFileInfo(*path).fileName().toStdString(),
                testing::MatchesRegex("Tamrik Rec [0-9]{4}-[0-9]{2}-[0-9]{2} at "
                                      "[0-9]{2}\\.[0-9]{2}\\.[0-9]{2}\\.mp4"));
    const auto film = Film::read(*path);
    ASSERT_TRUE(succeeded(film));
    EXPECT_EQ(film->size, area().size());
    EXPECT_FALSE(film->hasSound);
    EXPECT_LE(film->seconds, static_cast<double>(all - paused) / 1000);
    EXPECT_GE(film->seconds, 0.3);
    EXPECT_GE(paused, 1000);
    EXPECT_GE(firstAtLeast, 180); // the overlay gets that long to go
    const auto first = Film::firstFrame(*path);
    ASSERT_TRUE(succeeded(first));
    EXPECT_TRUE(shows(*first, *before));
    const auto last = Film::lastFrame(*path);
    ASSERT_TRUE(succeeded(last));
    EXPECT_FALSE(shows(*last, *before));

    EXPECT_EQ(temporaryFiles(*desktop), QStringList());
    const auto uris = Clipboard(*desktop).read(QStringLiteral("text/uri-list"));
    ASSERT_TRUE(succeeded(uris));
    EXPECT_EQ(*uris, QUrl::fromLocalFile(*path).toEncoded() + "\r\n");
    // The badge is dark, in the corner of a picture that is not.
    const QRect chip = Tamrik::chipIn(tamrik->chips().front(), scale());
    const QPoint badge(chip.right() - qRound(10 * scale()), chip.top() + qRound(15 * scale()));
    EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("the badge"), [&] {
        const auto color = screen().pixel(badge);
        return color && color->lightness() < 0x40;
    })));
    EXPECT_TRUE(succeeded(awaitRedIcon(false)));
    EXPECT_TRUE(succeeded(windows().awaitFocused(focused)));
}

TEST_F(Recording, TheMicrophoneIsInTheFilmButNeverInOneForAGIF)
{
    const SoundServer sound;
    ASSERT_TRUE(succeeded(tamrik->app().stop()));
    ASSERT_NO_FATAL_FAILURE(wantMicrophone());
    ASSERT_NO_FATAL_FAILURE(
        restart({{QStringLiteral("PULSE_SERVER"), QString::fromStdString(sound.address())}}));

    ASSERT_NO_FATAL_FAILURE(record());
    ASSERT_TRUE(succeeded(controls->click(Control::Stop)));
    const auto path = awaitFilm();
    ASSERT_TRUE(succeeded(path));
    const auto film = Film::read(*path);
    ASSERT_TRUE(succeeded(film));
    EXPECT_TRUE(film->hasSound);

    ASSERT_TRUE(succeeded(tamrik->putChipsAway()));
    ASSERT_TRUE(QFile::remove(*path));
    ASSERT_NO_FATAL_FAILURE(record("alt+Return"));
    ASSERT_TRUE(succeeded(controls->click(Control::Stop)));
    ASSERT_TRUE(succeeded(tamrik->awaitChips(1)));
    const QStringList films = tamrik->captures().filter(QStringLiteral(".mp4"));
    ASSERT_EQ(films.size(), 1);
    const auto silent = Film::read(films.front());
    ASSERT_TRUE(succeeded(silent));
    EXPECT_FALSE(silent->hasSound);
}

TEST_F(Recording, WhatIsThrownAwayLeavesNothing)
{
    ASSERT_NO_FATAL_FAILURE(record());
    const QStringList before = temporaryFiles(*desktop);
    ASSERT_TRUE(succeeded(controls->click(Control::Restart)));
    // The same one goes on, with another film.
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("a fresh film"), [&] {
        const QStringList now = temporaryFiles(*desktop);
        return now.size() == 2 && now != before;
    })));
    ASSERT_TRUE(succeeded(controls->click(Control::Discard)));
    ASSERT_TRUE(succeeded(RecordingControls::awaitNone(*desktop, *tamrik)));
    EXPECT_TRUE(succeeded(awaitRedIcon(false)));
    EXPECT_EQ(temporaryFiles(*desktop), QStringList());
    EXPECT_TRUE(tamrik->captures().isEmpty());
    EXPECT_TRUE(tamrik->chips().isEmpty());
}

TEST_F(Recording, OfAProgramThatIsKilledTheNextStartDeliversTheFilm)
{
    ASSERT_NO_FATAL_FAILURE(record());
    std::this_thread::sleep_for(1s);
    ASSERT_TRUE(succeeded(tamrik->app().signal(SIGKILL)));
    ASSERT_TRUE(succeeded(tamrik->app().waitForExit()));
    EXPECT_TRUE(tamrik->captures().isEmpty());
    ASSERT_NO_FATAL_FAILURE(restart());
    const auto path = awaitFilm();
    ASSERT_TRUE(succeeded(path));
    const auto film = Film::read(*path);
    ASSERT_TRUE(succeeded(film));
    EXPECT_EQ(film->size, area().size());
    EXPECT_GE(film->seconds, 0.5);
    EXPECT_EQ(temporaryFiles(*desktop), QStringList());
    EXPECT_TRUE(succeeded(awaitRedIcon(false)));
}

TEST_F(Recording, OfAProgramThatQuitsTheNextStartDeliversTheFilm)
{
    ASSERT_NO_FATAL_FAILURE(record());
    ASSERT_TRUE(succeeded(controls->click(Control::Pause)));
    ASSERT_TRUE(succeeded(controls->awaitPaused(true)));
    ASSERT_TRUE(succeeded(controls->click(Control::Pause)));
    ASSERT_NO_FATAL_FAILURE(awaitFilming(2));
    const auto icon = awaitTrayIcon(*desktop, tamrik->app().pid());
    ASSERT_TRUE(succeeded(icon));
    ASSERT_TRUE(succeeded(input().click(icon->center())));
    ASSERT_TRUE(succeeded(tamrik->awaitMenu()));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Up")))); // the last item: Quit
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    const auto ended = tamrik->app().waitForExit();
    ASSERT_TRUE(succeeded(ended));
    EXPECT_EQ(*ended, (Exit{0, false}));
    EXPECT_EQ(tamrik->app().errorOutput(), QString());
    EXPECT_EQ(temporaryFiles(*desktop).size(), 3);
    EXPECT_TRUE(tamrik->captures().isEmpty());
    ASSERT_NO_FATAL_FAILURE(restart());
    const auto path = awaitFilm();
    ASSERT_TRUE(succeeded(path));
    EXPECT_EQ(temporaryFiles(*desktop), QStringList());
}

INSTANTIATE_TEST_SUITE_P(Recordings, RecordingOn,
                         testing::Values(DesktopCase{"Openbox", {}},
                                         DesktopCase{"UncompositedScaleTwo",
                                                     {.scale = 2, .compositor = Compositor::None}}),
                         nameOf);
