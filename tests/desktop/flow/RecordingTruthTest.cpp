// Whether a film tells the truth: what was on the screen, when, and what was heard then.

#include "desktop/flow/NumberedRecording.h"
#include "support/Beeper.h"
#include "support/SoundServer.h"
#include "support/Tones.h"

#include <QMap>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <thread>

using namespace Desktop;
using namespace std::chrono_literals;
using Control = RecordingControls::Control;
using Instant = NumberedWindow::Instant;

namespace {

class RecordingTruth : public NumberedRecording {
protected:
    /// With the microphone, from now on.
    void hear(const SoundServer& sound)
    {
        ASSERT_TRUE(succeeded(tamrik->app().stop()));
        ASSERT_NO_FATAL_FAILURE(wantMicrophone());
        ASSERT_NO_FATAL_FAILURE(
            restart({{QStringLiteral("PULSE_SERVER"), QString::fromStdString(sound.address())}}));
    }
};

double seconds(Instant instant)
{
    return std::chrono::duration<double>(instant.time_since_epoch()).count();
}

/// Of so many observations as many may be wrong because the machine was busy at that moment, with
/// what the test itself does too.
qsizetype excused(qsizetype all)
{
    return 1 + all / 20;
}

/// How many frames of a segment show something of another moment than their own.
qsizetype misplaced(const QList<NumberedFrame>& frames,
                    const QList<NumberedWindow::Showing>& showings)
{
    // By each frame the segment began at some time between two.
    QList<double> earliest;
    double latest = 1e99;
    for (const NumberedFrame& frame : frames) {
        const qsizetype index = frame.number - showings.front().number;
        earliest += seconds(showings[index].from) - frame.time;
        latest = std::min(latest, seconds(showings[index + 1].to) - frame.time);
    }
    // A frame's time is when the tool began to look.
    return std::count_if(earliest.begin(), earliest.end(),
                         [&](double time) { return time > latest + 1.0 / 60; });
}

} // namespace

TEST_F(RecordingTruth, EveryFrameIsOfItsMomentAndNoneOfAPause)
{
    ASSERT_NO_FATAL_FAILURE(record());
    window->count(33ms);
    std::this_thread::sleep_for(1s);
    ASSERT_TRUE(succeeded(controls->click(Control::Pause)));
    ASSERT_TRUE(succeeded(awaitNoTool()));
    const double paused = seconds(std::chrono::steady_clock::now());
    std::this_thread::sleep_for(500ms);
    const double resumed = seconds(std::chrono::steady_clock::now());
    ASSERT_NO_FATAL_FAILURE(clickAgain());
    ASSERT_NO_FATAL_FAILURE(awaitFilming(2));
    std::this_thread::sleep_for(1s);
    ASSERT_TRUE(succeeded(controls->click(Control::Stop)));
    const auto path = awaitFilm();
    const QList<NumberedWindow::Showing> showings = window->stop();
    ASSERT_TRUE(succeeded(path));
    const auto frames = readNumbers(*path);
    ASSERT_TRUE(succeeded(frames));

    QList<NumberedFrame> first;
    QList<NumberedFrame> second;
    int last = 0;
    int changes = 0;
    for (const NumberedFrame& frame : *frames) {
        EXPECT_GE(frame.number, last) << frame.time;
        changes += frame.number > last;
        last = frame.number;
        if (frame.number == 0) // from before it counted
            continue;
        const qsizetype index = frame.number - showings.front().number;
        ASSERT_LT(index + 1, showings.size());
        const bool isBefore = seconds(showings[index].from) < paused;
        EXPECT_TRUE(isBefore || seconds(showings[index + 1].to) > resumed) << frame.number;
        (isBefore ? first : second) += frame;
    }
    EXPECT_GT(changes, 30); // of some sixty; a busy machine loses some
    for (const auto& part : {first, second}) {
        ASSERT_FALSE(part.isEmpty());
        EXPECT_LE(misplaced(part, showings), excused(part.size())) << "of " << part.size();
    }
}

TEST_F(RecordingTruth, AfterManyPausesEveryBeepIsHeardWhenItsFlashIsSeen)
{
    const SoundServer sound;
    ASSERT_NO_FATAL_FAILURE(hear(sound));
    Beeper beeper(sound);
    constexpr int pauses = TAMRIK_PAUSES;
    // Seconds for which there surely was a segment, and in which there can have been one.
    double atLeast = 0;
    double atMost = 0;
    double asked = seconds(std::chrono::steady_clock::now());
    ASSERT_NO_FATAL_FAILURE(record());
    double begun = seconds(std::chrono::steady_clock::now());
    for (int i = 1; i <= pauses + 1; ++i) {
        SCOPED_TRACE(i);
        std::this_thread::sleep_until(beeper.beep());
        window->show(i);
        std::this_thread::sleep_for(80ms); // of the tone's 50
        atLeast += seconds(std::chrono::steady_clock::now()) - begun;
        if (i == 1)
            ASSERT_TRUE(succeeded(controls->click(Control::Pause)));
        else
            ASSERT_NO_FATAL_FAILURE(clickAgain());
        ASSERT_TRUE(succeeded(awaitNoTool()));
        atMost += seconds(std::chrono::steady_clock::now()) - asked;
        if (i > pauses)
            break;
        asked = seconds(std::chrono::steady_clock::now());
        ASSERT_NO_FATAL_FAILURE(clickAgain());
        ASSERT_NO_FATAL_FAILURE(awaitFilming(i + 1));
        begun = seconds(std::chrono::steady_clock::now());
    }
    double recorded = 0;
    for (const QString& segment : segments()) {
        const auto film = Film::read(temporaryFolder(*desktop) + u'/' + segment);
        ASSERT_TRUE(succeeded(film));
        recorded += film->seconds;
    }
    ASSERT_TRUE(succeeded(controls->click(Control::Stop)));
    ASSERT_TRUE(succeeded(tamrik->awaitChips(1)));
    const auto path = awaitFilm();
    ASSERT_TRUE(succeeded(path));

    const auto film = Film::read(*path);
    ASSERT_TRUE(succeeded(film));
    EXPECT_NEAR(film->seconds, recorded, 0.001);
    EXPECT_GE(recorded, atLeast);
    EXPECT_LE(recorded, atMost);
    const auto frames = readNumbers(*path);
    ASSERT_TRUE(succeeded(frames));
    const std::vector<double> heard = Tones::beginningsIn(Tones::soundOf(path->toStdString()));
    QMap<int, double> seen; // when each number was first
    int last = 0;
    for (const NumberedFrame& frame : *frames) {
        EXPECT_GE(frame.number, last) << frame.time;
        last = frame.number;
        if (frame.number > 0 && !seen.contains(frame.number))
            seen[frame.number] = frame.time;
    }
    // A busy machine may not come to look before the next pause, and a tone may have a gap of the
    // sound server's and count as two.
    constexpr qsizetype flashes = pauses + 1;
    ASSERT_LE(last, flashes);
    ASSERT_GE(seen.size(), flashes - excused(flashes));
    EXPECT_LE(std::abs(static_cast<qsizetype>(heard.size()) - flashes), excused(flashes));
    ASSERT_FALSE(heard.empty());
    std::vector<double> apart; // in seconds, in order
    for (const double flash : seen)
        apart.push_back(std::abs(Tones::nearest(heard, flash) - flash));
    // By the middle one, since the machine may be busy when one of them sounds; of the last ones
    // too, in which errors of all the pauses would have added up.
    const auto middle = [](std::vector<double> distances) {
        std::sort(distances.begin(), distances.end());
        return distances[distances.size() / 2];
    };
    EXPECT_LE(middle(apart), 1.0 / 30);
    EXPECT_LE(middle({apart.end() - std::min<std::ptrdiff_t>(10, std::ssize(apart)), apart.end()}),
              1.0 / 30);
    RecordProperty("farthest_milliseconds",
                   std::to_string(1000 * *std::max_element(apart.begin(), apart.end())));
}
