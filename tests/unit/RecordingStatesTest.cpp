// What a recorder does when the next segment cannot be filmed, and when nothing is under way.

#include "unit/RecordingFixture.h"

using testing::ElementsAre;
using State = RecordingState;

namespace {

class RecordingStates : public RecordingFixture {
protected:
    static void expectLaunchFailure()
    {
        EXPECT_EQ(TestLog::takeLines(),
                  QStringList{QStringLiteral("failed to start recording: No such file")});
    }
};

const QUrl nothing;

} // namespace

TEST_F(RecordingStates, AToolThatDoesNotStartAfreshGivesNothing)
{
    start();
    recordAndPause();
    manager->togglePause();
    manager->restart();
    launchError = "No such file";
    end();
    expectLaunchFailure();
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_EQ(manager->elapsed(), 0);
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_TRUE(exports.empty());
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingStates, AToolThatDoesNotStartAfreshOutOfAPauseGivesNothing)
{
    start();
    recordAndPause();
    launchError = "No such file";
    manager->restart();
    expectLaunchFailure();
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_TRUE(exports.empty());
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingStates, AToolThatDoesNotStartRightAfterAPauseDeliversWhatThereIs)
{
    start();
    manager->togglePause();
    manager->togglePause();
    launchError = "No such file";
    end();
    expectLaunchFailure();
    EXPECT_EQ(manager->state(), State::idle);
    ASSERT_EQ(exports.size(), 1u);
    EXPECT_EQ(exports[0].sources, QStringList{run(0).file()});
    complete(MovieExport::End::completed);
    EXPECT_THAT(results, ElementsAre(QUrl::fromLocalFile(finalPath())));
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingStates, WithoutAScreenARestartGivesNothing)
{
    start();
    manager->restart();
    FakePlatform::current().screens.clear();
    end();
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_EQ(runs.size(), 1u);
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingStates, WhatIsThrownAwayWhenThereIsNothingDoesNotCountLater)
{
    manager->stop(true);
    EXPECT_EQ(manager->state(), State::idle);
    EXPECT_TRUE(results.isEmpty());
    start();
    manager->stop(false);
    end();
    ASSERT_EQ(exports.size(), 1u);
    complete(MovieExport::End::completed);
    EXPECT_THAT(results, ElementsAre(QUrl::fromLocalFile(finalPath())));
}
