// What becomes of a recording when its film cannot be made.

#include "Support/Background.h"
#include "unit/RecordingFixture.h"

#include <QSemaphore>

using testing::ElementsAre;

namespace {

class RecordingFinishingTest : public RecordingFixture {};

const QUrl nothing;

} // namespace

TEST_F(RecordingFinishingTest, AFailedRewrapIsLoggedAndLeavesTheSegmentUnderTheFinalName)
{
    write(fallbackPath(), "older");
    start();
    manager->stop(false);
    end();
    complete(MovieExport::End::failed, "no space left");
    EXPECT_EQ(TestLog::takeLines(), QStringList{QStringLiteral("mp4 remux failed: no space left")});
    ASSERT_TRUE(runUntil([this] { return !results.isEmpty(); }));
    EXPECT_THAT(results, ElementsAre(QUrl::fromLocalFile(fallbackPath())));
    EXPECT_EQ(contents(fallbackPath()), "film");
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingFinishingTest, OtherWorkDoesNotKeepASegmentFromBecomingTheFilm)
{
    QSemaphore enough;
    QThreadPool& others = *QThreadPool::globalInstance();
    for (int i = 0; i < others.maxThreadCount(); ++i)
        others.start([&] { enough.acquire(); });
    start();
    manager->stop(false);
    end();
    complete(MovieExport::End::impossible);
    EXPECT_TRUE(runUntil([this] { return !results.isEmpty(); }));
    enough.release(others.maxThreadCount());
    others.waitForDone();
    EXPECT_THAT(results, ElementsAre(QUrl::fromLocalFile(fallbackPath())));
}

TEST_F(RecordingFinishingTest, ARewrapThatCannotBeginIsNotLogged)
{
    start();
    manager->stop(false);
    end();
    complete(MovieExport::End::impossible, "there is no library");
    ASSERT_TRUE(runUntil([this] { return !results.isEmpty(); }));
    EXPECT_THAT(results, ElementsAre(QUrl::fromLocalFile(fallbackPath())));
}

TEST_F(RecordingFinishingTest, ASegmentThatCannotBeMovedEitherStaysAndGivesNothing)
{
    start();
    manager->stop(false);
    end();
    const QString captures = folder.filePath(QStringLiteral("captures"));
    QDir(captures).removeRecursively();
    write(captures, "in the way");
    complete(MovieExport::End::impossible);
    ASSERT_TRUE(runUntil([this] { return !results.isEmpty(); }));
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_EQ(segmentFiles(), QStringList{QFileInfo(run(0).file()).fileName()});
    // The next start tries again: nobody holds the journal any more.
    QFile::remove(captures);
    exports.clear();
    Background::threads().waitForDone();
    manager->recover([this](const QUrl& file, bool) { results.append(file); });
    ASSERT_EQ(exports.size(), 1u);
    complete(MovieExport::End::completed);
    EXPECT_EQ(results.back(), QUrl::fromLocalFile(finalPath()));
    EXPECT_TRUE(isTidy());
}

TEST_F(RecordingFinishingTest, AFailedJoinGivesNothingAndDeletesTheSegments)
{
    start();
    recordAndPause();
    manager->togglePause();
    manager->stop(false);
    end();
    complete(MovieExport::End::failed, "no space left");
    EXPECT_THAT(results, ElementsAre(nothing));
    EXPECT_TRUE(isTidy());
    EXPECT_FALSE(QFile::exists(fallbackPath()));
}
