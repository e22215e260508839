#include "Support/CaptureFiles.h"

#include "fakes/FakeClock.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

TEST(CaptureFiles, NamesHoldTheLocalTimeToTheSecond)
{
    FakeClock clock;
    clock.set(QDateTime(QDate(2024, 3, 5), QTime(14, 7, 9, 999)));
    EXPECT_EQ(CaptureFiles::newScreenshot(clock.clock()).fileName(),
              QStringLiteral("Tamrik 2024-03-05 at 14.07.09.png"));
    EXPECT_EQ(CaptureFiles::newRecording(clock.clock()).fileName(),
              QStringLiteral("Tamrik Rec 2024-03-05 at 14.07.09.mp4"));
}

TEST(CaptureFiles, TwoCapturesInOneSecondShareAName)
{
    FakeClock clock;
    const QUrl first = CaptureFiles::newScreenshot(clock.clock());
    clock.advance(std::chrono::milliseconds(400));
    EXPECT_EQ(CaptureFiles::newScreenshot(clock.clock()), first);
    clock.advance(std::chrono::milliseconds(600));
    EXPECT_NE(CaptureFiles::newScreenshot(clock.clock()), first);
}

TEST(CaptureFiles, LieInPicturesTamrikUnderHome)
{
    FakeClock clock;
    const QUrl file = CaptureFiles::newScreenshot(clock.clock());
    EXPECT_TRUE(file.isLocalFile());
    EXPECT_EQ(QFileInfo(file.toLocalFile()).path(),
              QDir::homePath() + QStringLiteral("/Pictures/Tamrik"));
}

TEST(CaptureFiles, TheFolderIsCreatedWithItsParentsAndMayExist)
{
    QDir(CaptureFiles::folder()).removeRecursively();
    CaptureFiles::createFolder();
    CaptureFiles::createFolder();
    EXPECT_TRUE(QFileInfo(CaptureFiles::folder()).isDir());
}
