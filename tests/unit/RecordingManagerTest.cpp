#include "unit/RecordingFixture.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using State = RecordingState;

namespace {

class RecordingManagerTest : public RecordingFixture {
protected:
    void bringInto(State state)
    {
        if (state == State::idle)
            return;
        start();
        switch (state) {
        case State::idle:
        case State::recording:
            return;
        case State::pausing:
            manager->togglePause();
            return;
        case State::paused:
            recordAndPause();
            return;
        case State::stopping:
            manager->stop(false);
            return;
        case State::restarting:
            manager->restart();
            return;
        }
    }
};

const QUrl nothing;

} // namespace

TEST_F(RecordingManagerTest, RunsTheToolForTheFirstSegment)
{
    EXPECT_EQ(manager->state(), State::idle);
    start();
    EXPECT_EQ(manager->state(), State::recording);
    EXPECT_EQ(startedCalls, 1);
    ASSERT_EQ(runs.size(), 1u);
    const QString file = run(0).file();
    EXPECT_EQ(run(0).command.program, QStringLiteral("/tools/screencapture"));
    EXPECT_EQ(run(0).command.environment.value(QStringLiteral("SCREENS")), QStringLiteral("one"));
    EXPECT_TRUE(run(0).command.keepsErrors);
    // The fake's screen is 900 points high.
    EXPECT_EQ(run(0).command.arguments,
              (QStringList{QStringLiteral("-v"), QStringLiteral("-x"), QStringLiteral("-C"),
                           QStringLiteral("-R"), QStringLiteral("100,549,300,151"),
                           QStringLiteral("-k"), file}));
    EXPECT_EQ(QFileInfo(file).path(), segmentFolder());
    EXPECT_THAT(QFileInfo(file).fileName().toStdString(),
                testing::MatchesRegex("tamrik-seg-[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-"
                                      "[0-9A-F]{4}-[0-9A-F]{12}\\.mov"));
    EXPECT_TRUE(results.isEmpty());
}

TEST_F(RecordingManagerTest, MicrophoneAndClicksAreOptions)
{
    manager->start(session(true, true));
    EXPECT_EQ(run(0).command.arguments.mid(5, 2),
              (QStringList{QStringLiteral("-k"), QStringLiteral("-g")}));
    makeManager();
    manager->start(session(true, false));
    EXPECT_EQ(run(1).command.arguments.mid(5, 1), QStringList{QStringLiteral("-g")});
    makeManager();
    manager->start(session(false, false));
    EXPECT_EQ(run(2).command.arguments.size(), 6);
}

TEST_F(RecordingManagerTest, TheFirstScreenConvertsRectanglesOfAllScreens)
{
    FakePlatform::current().screens.push_back({.name = QStringLiteral("Below"),
                                               .frame = {0, -1080, 1920, 1080},
                                               .visibleFrame = {0, -1080, 1920, 1080},
                                               .scale = 2,
                                               .handle = nullptr});
    auto below = session();
    below.rect = {10, -500, 200, 100};
    manager->start(below);
    EXPECT_EQ(run(0).command.arguments.at(4), QStringLiteral("10,1300,200,100"));
}

TEST_F(RecordingManagerTest, WithoutAScreenItEndsAtOnce)
{
    FakePlatform::current().screens.clear();
    start();
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_EQ(startedCalls, 0);
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingManagerTest, ASecondSessionEndsAtOnceAndTheFirstGoesOn)
{
    for (const State state :
         {State::recording, State::pausing, State::paused, State::stopping, State::restarting})
    {
        makeManager();
        bringInto(state);
        QList<QUrl> refused;
        auto second = session();
        second.started = [] { ADD_FAILURE() << "the second session started"; };
        second.completion = [&](const QUrl& file) { refused.append(file); };
        manager->start(second);
        EXPECT_THAT(refused, ElementsAre(nothing));
        EXPECT_EQ(manager->state(), state);
        EXPECT_TRUE(results.isEmpty());
    }
}

TEST_F(RecordingManagerTest, APauseEndsASegmentAndResumingStartsTheNext)
{
    start();
    manager->togglePause();
    EXPECT_EQ(manager->state(), State::pausing);
    EXPECT_EQ(run(0).interrupts, 1);
    EXPECT_TRUE(manager->isPaused());
    end();
    EXPECT_EQ(manager->state(), State::paused);
    EXPECT_TRUE(manager->isPaused());
    EXPECT_EQ(runs.size(), 1u);

    manager->togglePause();
    EXPECT_EQ(manager->state(), State::recording);
    EXPECT_FALSE(manager->isPaused());
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_NE(run(0).file(), run(1).file());
    EXPECT_EQ(startedCalls, 1);

    manager->stop(false);
    end();
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_FALSE(exports[0].copies);
    EXPECT_EQ(exports[0].sources, (QStringList{run(0).file(), run(1).file()}));
    EXPECT_EQ(exports[0].destination, finalPath());
    complete(MovieExport::End::completed);
    EXPECT_THAT(results, ElementsAre(QUrl::fromLocalFile(finalPath())));
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingManagerTest, ResumingWhileStillPausingNeverRests)
{
    start();
    manager->togglePause();
    manager->togglePause();
    EXPECT_EQ(manager->state(), State::pausing);
    EXPECT_EQ(run(0).interrupts, 1);
    end();
    EXPECT_EQ(manager->state(), State::recording);
    EXPECT_EQ(runs.size(), 2u);
    // The wish is fulfilled: the next pause is one.
    recordAndPause();
    EXPECT_EQ(manager->state(), State::paused);
}

TEST_F(RecordingManagerTest, PausingDoesNothingWhenThereIsNothingToPause)
{
    for (const State state : {State::idle, State::stopping, State::restarting}) {
        makeManager();
        bringInto(state);
        const auto before = runs.size();
        const int interrupts = runs.empty() ? 0 : runs.back()->interrupts;
        manager->togglePause();
        EXPECT_EQ(manager->state(), state);
        EXPECT_EQ(runs.size(), before);
        EXPECT_EQ(runs.empty() ? 0 : runs.back()->interrupts, interrupts);
    }
}

TEST_F(RecordingManagerTest, StopEndsTheSegmentAndRewrapsIt)
{
    start();
    manager->stop(false);
    EXPECT_EQ(manager->state(), State::stopping);
    EXPECT_EQ(run(0).interrupts, 1);
    EXPECT_TRUE(results.isEmpty());
    end();
    EXPECT_EQ(manager->state(), State::idle);
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_TRUE(exports[0].copies);
    EXPECT_EQ(exports[0].sources, QStringList{run(0).file()});
    EXPECT_EQ(exports[0].destination, finalPath());
    EXPECT_TRUE(results.isEmpty());
    complete(MovieExport::End::completed);
    EXPECT_THAT(results, ElementsAre(QUrl::fromLocalFile(finalPath())));
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingManagerTest, StopWhilePausedFinishesWithoutRunningAnything)
{
    start();
    recordAndPause();
    manager->stop(false);
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_EQ(runs.size(), 1u);
    EXPECT_EQ(run(0).interrupts, 1);
    EXPECT_EQ(exports.size(), 1u);
}

TEST_F(RecordingManagerTest, StopWhilePausingInterruptsAgainAndBeatsAResume)
{
    start();
    manager->togglePause();
    manager->togglePause();
    manager->stop(false);
    EXPECT_EQ(manager->state(), State::stopping);
    EXPECT_EQ(run(0).interrupts, 2);
    end();
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_EQ(runs.size(), 1u);
    EXPECT_EQ(exports.size(), 1u);
}

TEST_F(RecordingManagerTest, StopDoesNothingMoreWhenItIsUnderWay)
{
    for (const State state : {State::idle, State::stopping, State::restarting}) {
        makeManager();
        bringInto(state);
        const int interrupts = runs.empty() ? 0 : runs.back()->interrupts;
        manager->stop(false);
        EXPECT_EQ(manager->state(), state);
        EXPECT_EQ(runs.empty() ? 0 : runs.back()->interrupts, interrupts);
        EXPECT_TRUE(results.isEmpty());
    }
}

TEST_F(RecordingManagerTest, StopBeforeTheToolHasFilmedAnythingGivesNothing)
{
    start();
    clock.advance(30ms);
    manager->stop(false);
    end(false);
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_TRUE(exports.empty());
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingManagerTest, DiscardDeletesEverySegment)
{
    start();
    recordAndPause();
    manager->togglePause();
    manager->stop(true);
    EXPECT_EQ(manager->state(), State::stopping);
    end();
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_TRUE(exports.empty());
    EXPECT_TRUE(isTidy());
    EXPECT_TRUE(QDir(folder.filePath(QStringLiteral("captures"))).isEmpty());
}

TEST_F(RecordingManagerTest, DiscardWhilePausedDeletesAtOnce)
{
    start();
    recordAndPause();
    manager->stop(true);
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingManagerTest, ALaterStopDoesNotUndoADiscard)
{
    start();
    manager->stop(true);
    manager->stop(false);
    end();
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_TRUE(exports.empty());
}

TEST_F(RecordingManagerTest, ADiscardAfterStopCounts)
{
    start();
    manager->stop(false);
    manager->stop(true);
    end();
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingManagerTest, ADiscardWhileRestartingHoldsForTheFreshSegment)
{
    start();
    manager->restart();
    manager->stop(true);
    EXPECT_EQ(manager->state(), State::restarting);
    end();
    EXPECT_EQ(manager->state(), State::recording);
    manager->stop(false);
    end();
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingManagerTest, TheNextSessionIsNotDiscarded)
{
    start();
    manager->stop(true);
    end();
    start();
    manager->stop(false);
    end();
    complete(MovieExport::End::completed);
    EXPECT_THAT(results, ElementsAre(nothing, QUrl::fromLocalFile(finalPath())));
    EXPECT_EQ(startedCalls, 2);
}

TEST_F(RecordingManagerTest, ARestartThrowsEverythingAwayAndGoesOnInTheSameSession)
{
    start();
    clock.advance(5s);
    recordAndPause();
    manager->togglePause();
    clock.advance(3s);
    manager->restart();
    EXPECT_EQ(manager->state(), State::restarting);
    EXPECT_EQ(run(1).interrupts, 1);
    end();
    EXPECT_EQ(manager->state(), State::recording);
    EXPECT_EQ(manager->elapsed(), 0);
    EXPECT_EQ(startedCalls, 1);
    EXPECT_TRUE(segmentFiles().isEmpty());
    ASSERT_EQ(runs.size(), 3u);

    manager->stop(false);
    end();
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_EQ(exports[0].sources, QStringList{run(2).file()});
    complete(MovieExport::End::completed);
    EXPECT_THAT(results, ElementsAre(QUrl::fromLocalFile(finalPath())));
}

TEST_F(RecordingManagerTest, ARestartWhilePausedBeginsAtOnce)
{
    start();
    clock.advance(5s);
    recordAndPause();
    manager->restart();
    EXPECT_EQ(manager->state(), State::recording);
    EXPECT_EQ(manager->elapsed(), 0);
    EXPECT_EQ(runs.size(), 2u);
    EXPECT_TRUE(segmentFiles().isEmpty());
}

TEST_F(RecordingManagerTest, ARestartWhilePausingForgetsAResume)
{
    start();
    manager->togglePause();
    manager->togglePause();
    manager->restart();
    EXPECT_EQ(manager->state(), State::restarting);
    EXPECT_EQ(run(0).interrupts, 2);
    end();
    EXPECT_EQ(manager->state(), State::recording);
    recordAndPause();
    EXPECT_EQ(manager->state(), State::paused);
}

TEST_F(RecordingManagerTest, RestartDoesNothingWhenThereIsNothingToRestart)
{
    for (const State state : {State::idle, State::stopping, State::restarting}) {
        makeManager();
        bringInto(state);
        const int interrupts = runs.empty() ? 0 : runs.back()->interrupts;
        manager->restart();
        EXPECT_EQ(manager->state(), state);
        EXPECT_EQ(runs.empty() ? 0 : runs.back()->interrupts, interrupts);
    }
}

TEST_F(RecordingManagerTest, AToolThatEndsByItselfDeliversWhatItFilmed)
{
    start();
    end();
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_EQ(run(0).interrupts, 0);
    complete(MovieExport::End::completed);
    EXPECT_THAT(results, ElementsAre(QUrl::fromLocalFile(finalPath())));
}

TEST_F(RecordingManagerTest, AToolThatDiesWithoutAFileIsLoggedAndEarlierSegmentsAreDelivered)
{
    start();
    recordAndPause();
    manager->togglePause();
    run(1).errors = "no such display\n";
    end(false);
    EXPECT_EQ(TestLog::takeLines(),
              QStringList{QStringLiteral("recording segment failed: no such display\n")});
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_TRUE(exports[0].copies);
    EXPECT_EQ(exports[0].sources, QStringList{run(0).file()});
}

TEST_F(RecordingManagerTest, AToolThatLeftAFileIsNotLogged)
{
    start();
    run(0).errors = "the microphone is missing\n";
    end();
    EXPECT_TRUE(TestLog::takeLines().isEmpty());
}

TEST_F(RecordingManagerTest, ErrorsThatAreNoTextAreNotLogged)
{
    start();
    run(0).errors = "\xff\xfe";
    end(false);
    EXPECT_TRUE(TestLog::takeLines().isEmpty());
    EXPECT_THAT(results, ElementsAre(nothing));
}

TEST_F(RecordingManagerTest, APausedSegmentWithoutAFileIsDropped)
{
    start();
    manager->togglePause();
    end(false);
    EXPECT_EQ(manager->state(), State::paused);
    manager->togglePause();
    manager->stop(false);
    end();
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_EQ(exports[0].sources, QStringList{run(1).file()});
}

TEST_F(RecordingManagerTest, AToolThatDoesNotStartIsLoggedAndGivesNothing)
{
    launchError = "No such file";
    start();
    EXPECT_EQ(TestLog::takeLines(),
              QStringList{QStringLiteral("failed to start recording: No such file")});
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_EQ(startedCalls, 0);
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingManagerTest, AToolThatDoesNotStartAgainDeliversWhatThereIs)
{
    start();
    recordAndPause();
    launchError = "No such file";
    manager->togglePause();
    EXPECT_EQ(TestLog::takeLines().size(), 1);
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_EQ(exports.size(), 1u);
}

TEST_F(RecordingManagerTest, WithoutAScreenAResumeDeliversWhatThereIs)
{
    start();
    recordAndPause();
    FakePlatform::current().screens.clear();
    manager->togglePause();
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_EQ(exports.size(), 1u);
    EXPECT_EQ(runs.size(), 1u);
}

TEST_F(RecordingManagerTest, ElapsedCountsFromTheLaunchToTheHandledEndOfEachSegment)
{
    EXPECT_EQ(manager->elapsed(), 0);
    start();
    clock.advance(2500ms);
    EXPECT_DOUBLE_EQ(manager->elapsed(), 2.5);
    manager->togglePause();
    clock.advance(500ms);
    EXPECT_DOUBLE_EQ(manager->elapsed(), 3);
    end();
    clock.advance(1min);
    EXPECT_DOUBLE_EQ(manager->elapsed(), 3);
    manager->togglePause();
    clock.advance(1s);
    EXPECT_DOUBLE_EQ(manager->elapsed(), 4);
}

TEST_F(RecordingManagerTest, AClockThatIsSetBackTakesNothingAway)
{
    start();
    clock.advance(2s);
    recordAndPause();
    manager->togglePause();
    clock.set(QDateTime(QDate(2024, 3, 5), QTime(13, 0)));
    EXPECT_DOUBLE_EQ(manager->elapsed(), 2);
    recordAndPause();
    EXPECT_DOUBLE_EQ(manager->elapsed(), 2);
}

TEST_F(RecordingManagerTest, TheNextSessionNeedNotWaitForTheExport)
{
    start();
    manager->stop(false);
    end();
    auto second = session();
    second.finalURL = QUrl::fromLocalFile(folder.filePath(QStringLiteral("captures/b.mp4")));
    manager->start(second);
    EXPECT_EQ(manager->state(), State::recording);
    complete(MovieExport::End::completed);
    EXPECT_THAT(results, ElementsAre(QUrl::fromLocalFile(finalPath())));
    EXPECT_EQ(manager->state(), State::recording);
    manager->stop(false);
    end();
    EXPECT_EQ(exports.back().sources, QStringList{run(1).file()});
    complete(MovieExport::End::completed);
    EXPECT_EQ(results.back(), second.finalURL);
}

TEST_F(RecordingManagerTest, TheNextSessionMayStartFromTheCompletion)
{
    auto first = session();
    first.completion = [this](const QUrl&) { start(); };
    manager->start(first);
    manager->stop(false);
    end(false);
    EXPECT_EQ(manager->state(), State::recording);
    EXPECT_EQ(runs.size(), 2u);
}

TEST_F(RecordingManagerTest, WhenItIsGoneNothingHappensAnyMore)
{
    start();
    manager.reset();
    EXPECT_EQ(run(0).interrupts, 1);
    end();
    EXPECT_TRUE(results.isEmpty());
    EXPECT_TRUE(exports.empty());
}
