// Recordings that end in unusual ways, and at unusual moments.

#include "desktop/flow/NumberedRecording.h"

#include <QDir>
#include <QFile>

#include <csignal>
#include <iostream>
#include <random>
#include <thread>

using namespace Desktop;
using namespace std::chrono_literals;
using Control = RecordingControls::Control;
using Instant = NumberedWindow::Instant;
using std::chrono::steady_clock;

namespace {

class RecordingEnding : public NumberedRecording {
protected:
    /// Freezes the tool in the middle of filming, and clicks on pause: until it thaws, the
    /// recording is pausing.
    void beginToPause()
    {
        const QList<pid_t> running = tools();
        ASSERT_EQ(running.size(), 1);
        tool = running.front();
        kill(tool, SIGSTOP);
        ASSERT_TRUE(succeeded(controls->click(Control::Pause)));
        ASSERT_TRUE(succeeded(controls->awaitPaused(true)));
        ASSERT_EQ(tools(), running);
    }
    void thaw() const { kill(tool, SIGCONT); }

    Outcome<void> awaitTidiness() const
    {
        return waitUntil(QStringLiteral("no temporary files"),
                         [&] { return temporaryFiles(*desktop).isEmpty(); });
    }

    /// What the kernel says of a process under such a heading.
    static QByteArray statusOf(pid_t process, const char* heading)
    {
        QFile status(QStringLiteral("/proc/%1/status").arg(process));
        if (!status.open(QIODevice::ReadOnly))
            return {};
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith(heading))
                return line.mid(static_cast<qsizetype>(qstrlen(heading))).trimmed();
        }
        return {};
    }

    /// What a film shows, each number once.
    static QList<int> numbersIn(const QString& film)
    {
        const auto frames = readNumbers(film);
        EXPECT_TRUE(succeeded(frames));
        QList<int> numbers;
        for (const NumberedFrame& frame : frames ? *frames : QList<NumberedFrame>()) {
            if (numbers.isEmpty() || numbers.back() != frame.number)
                numbers += frame.number;
        }
        return numbers;
    }

    pid_t tool = 0;
};

} // namespace

TEST_F(RecordingEnding, StoppedInTheMiddleOfPausingItIsDelivered)
{
    ASSERT_NO_FATAL_FAILURE(record());
    ASSERT_NO_FATAL_FAILURE(beginToPause());
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("alt+shift+r"))));
    thaw();
    const auto path = awaitFilm();
    ASSERT_TRUE(succeeded(path));
    EXPECT_EQ(numbersIn(*path), QList{0});
    EXPECT_TRUE(succeeded(RecordingControls::awaitNone(*desktop, *tamrik)));
    EXPECT_TRUE(succeeded(awaitTidiness()));
}

TEST_F(RecordingEnding, RestartedInTheMiddleOfPausingItHasNothingOfBefore)
{
    ASSERT_NO_FATAL_FAILURE(record());
    const QStringList before = segments();
    ASSERT_NO_FATAL_FAILURE(beginToPause());
    ASSERT_TRUE(succeeded(controls->click(Control::Restart)));
    window->show(1);
    thaw();
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("a fresh film"), [&] {
        return segments().size() == 1 && segments() != before;
    })));
    ASSERT_TRUE(succeeded(controls->awaitPaused(false)));
    ASSERT_TRUE(succeeded(controls->click(Control::Stop)));
    const auto path = awaitFilm();
    ASSERT_TRUE(succeeded(path));
    EXPECT_EQ(numbersIn(*path), QList{1});
    EXPECT_TRUE(succeeded(awaitTidiness()));
}

TEST_F(RecordingEnding, ThrownAwayInTheMiddleOfPausingItLeavesNothing)
{
    ASSERT_NO_FATAL_FAILURE(record());
    ASSERT_NO_FATAL_FAILURE(beginToPause());
    ASSERT_TRUE(succeeded(controls->click(Control::Discard)));
    thaw();
    ASSERT_TRUE(succeeded(RecordingControls::awaitNone(*desktop, *tamrik)));
    EXPECT_TRUE(succeeded(awaitTidiness()));
    EXPECT_TRUE(tamrik->captures().isEmpty());
    EXPECT_TRUE(tamrik->chips().isEmpty());
}

TEST_F(RecordingEnding, StoppedBeforeTheToolHasBegunItLeavesNothingAndTheNextOneWorks)
{
    // The tool's second program, which films, stops itself before it begins.
    const QString real = desktop->home() + QStringLiteral("/real-tool");
    const QString held = desktop->home() + QStringLiteral("/held-tool");
    const QString hold = desktop->home() + QStringLiteral("/hold");
    ASSERT_NO_FATAL_FAILURE(write(real, {}));
    ASSERT_NO_FATAL_FAILURE(write(hold, {}));
    ASSERT_NO_FATAL_FAILURE(writeScript(
        held,
        QStringLiteral("[ ! -e \"%1\" ] || kill -STOP $$\nexec \"%2\" \"$@\"\n").arg(hold, real)));
    ASSERT_NO_FATAL_FAILURE(startWithMounts(
        QStringLiteral("mount --bind \"%1\" \"%2\" && mount --bind \"%3\" \"%1\" || exit 90\n")
            .arg(QStringLiteral(TAMRIK_MOVIE_TOOL), real, held)));
    ASSERT_NO_FATAL_FAILURE(select());
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("a tool that is stopped"), [&] {
        const QList<pid_t> running = tools();
        tool = running.value(0);
        return running.size() == 1 && statusOf(tool, "State:").startsWith('T');
    })));
    ASSERT_TRUE(succeeded(RecordingControls::await(*desktop, *tamrik)));
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("alt+shift+r"))));
    EXPECT_EQ(segments(), QStringList());
    ASSERT_TRUE(succeeded(waitUntil(QStringLiteral("the tool being told"), [&] {
        return (statusOf(tool, "ShdPnd:").toULongLong(nullptr, 16) >> (SIGINT - 1) & 1) != 0;
    })));
    ASSERT_TRUE(QFile::remove(hold));
    thaw();
    ASSERT_TRUE(succeeded(RecordingControls::awaitNone(*desktop, *tamrik)));
    EXPECT_TRUE(succeeded(awaitTidiness()));
    EXPECT_TRUE(tamrik->captures().isEmpty());
    EXPECT_TRUE(tamrik->chips().isEmpty());

    ASSERT_NO_FATAL_FAILURE(record());
    ASSERT_TRUE(succeeded(input().key(QStringLiteral("alt+shift+r"))));
    EXPECT_TRUE(succeeded(awaitFilm()));
}

namespace {

/// The last number that was on the screen at some moment.
int numberAt(const QList<NumberedWindow::Showing>& showings, Instant moment)
{
    int number = 0;
    for (const NumberedWindow::Showing& showing : showings) {
        if (showing.to <= moment)
            number = showing.number;
    }
    return number;
}

} // namespace

TEST_F(RecordingEnding, OfAToolThatIsKilledAllButTheLastSecondIsDelivered)
{
    ASSERT_NO_FATAL_FAILURE(record());
    window->count(50ms);
    std::this_thread::sleep_for(1500ms);
    const QList<pid_t> running = tools();
    ASSERT_EQ(running.size(), 1);
    const Instant killed = steady_clock::now();
    kill(running.front(), SIGKILL);
    const auto path = awaitFilm();
    const auto showings = window->stop();
    ASSERT_TRUE(succeeded(path));
    const QList<int> numbers = numbersIn(*path);
    EXPECT_GE(numbers.back(), numberAt(showings, killed - 1s));
    EXPECT_TRUE(succeeded(RecordingControls::awaitNone(*desktop, *tamrik)));
    EXPECT_TRUE(succeeded(awaitTidiness()));
}

TEST_F(RecordingEnding, OfAProgramThatIsKilledAtAnyMomentAllButTheLastSecondIsDeliveredLater)
{
    const unsigned given = qEnvironmentVariable("TAMRIK_TEST_SEED").toUInt();
    const unsigned seed = given != 0 ? given : std::random_device()();
    std::cout << "TAMRIK_TEST_SEED=" << seed << std::endl;
    std::mt19937 random(seed);
    constexpr unsigned rounds = 4;
    for (unsigned round = 0; round < rounds; ++round) {
        const std::chrono::milliseconds delay(round * 500 + random() % 500);
        SCOPED_TRACE(std::to_string(seed) + ", round " + std::to_string(round) + ", after " +
                     std::to_string(delay.count()));
        ASSERT_NO_FATAL_FAILURE(record());
        window->count(50ms);
        const Instant start = steady_clock::now();
        // Sometimes the tool goes with it, as when the machine does.
        const bool isToolKilled = random() % 2 == 1;
        Instant killed;
        bool wasDone = false;
        std::thread killer([&, pid = static_cast<pid_t>(tamrik->app().pid())] {
            std::this_thread::sleep_until(start + delay);
            const QList<pid_t> running = isToolKilled ? tools() : QList<pid_t>();
            kill(pid, SIGKILL);
            for (const pid_t each : running)
                kill(each, SIGKILL);
            killed = steady_clock::now();
            wasDone = temporaryFiles(*desktop).isEmpty();
        });
        // What a user does meanwhile, on and on.
        const auto isTime = [&](std::chrono::milliseconds time) {
            std::this_thread::sleep_until(start + std::min(time, delay));
            return time < delay;
        };
        Instant paused = Instant::max();
        Instant resumed = Instant::max();
        Instant stopped = Instant::max();
        if (isTime(400ms)) {
            paused = steady_clock::now();
            EXPECT_TRUE(succeeded(controls->click(Control::Pause)));
        }
        if (isTime(800ms)) {
            clickAgain();
            while (steady_clock::now() < start + delay && segments().size() < 2)
                std::this_thread::sleep_for(5ms);
            if (segments().size() > 1)
                resumed = steady_clock::now();
        }
        if (isTime(1600ms)) {
            stopped = steady_clock::now();
            EXPECT_TRUE(succeeded(input().key(QStringLiteral("alt+shift+r"))));
        }
        killer.join();
        ASSERT_TRUE(succeeded(tamrik->app().waitForExit()));
        const auto showings = window->stop();
        EXPECT_EQ(tamrik->app().errorOutput(), QString());

        ASSERT_NO_FATAL_FAILURE(restart());
        if (!wasDone) {
            ASSERT_TRUE(succeeded(tamrik->awaitChips(1)));
        }
        EXPECT_TRUE(succeeded(awaitTidiness()));
        const QStringList films = tamrik->captures();
        ASSERT_EQ(films.size(), 1);
        EXPECT_TRUE(films.front().endsWith(QStringLiteral(".mp4")));
        const Instant end = std::min(killed, stopped);
        // What came after the pause may all be of the last second.
        const Instant filmed = end > paused && end - 1s < resumed ? paused : end;
        const QList<int> numbers = numbersIn(films.front());
        ASSERT_FALSE(numbers.isEmpty());
        EXPECT_GE(numbers.back(), numberAt(showings, filmed - 1s));
        std::cout << "killed after " << delay.count() << " ms, "
                  << (isToolKilled ? "with its tool, " : "") << (wasDone ? "done, " : "")
                  << "shows " << numbers.back() << " of " << numberAt(showings, filmed) << '\n';
        if (!wasDone) {
            ASSERT_TRUE(succeeded(tamrik->putChipsAway()));
        }
        ASSERT_TRUE(QFile::remove(films.front()));
        window->show(0);
    }
}
