#include "ChipContent.h"

#include "CaptureKind.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

CaptureKind kindOf(const char* name)
{
    return captureKind(QUrl::fromLocalFile(QString::fromLatin1(name)));
}

} // namespace

TEST(DurationBadge, SecondsAreCutOff)
{
    EXPECT_EQ(durationBadge(125.9), QStringLiteral("▶ 2:05"));
    EXPECT_EQ(durationBadge(59.99), QStringLiteral("▶ 0:59"));
    EXPECT_EQ(durationBadge(0), QStringLiteral("▶ 0:00"));
    EXPECT_EQ(durationBadge(3600), QStringLiteral("▶ 60:00"));
}

TEST(DurationBadge, ThereIsNoneForAnEndlessOrUnknownDuration)
{
    EXPECT_FALSE(durationBadge(std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(durationBadge(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_FALSE(durationBadge(1e300));
}

TEST(CaptureKind, IsTheExtensionsWhateverItsCase)
{
    EXPECT_EQ(kindOf("/a/b.png"), CaptureKind::picture);
    EXPECT_EQ(kindOf("/a/b.PNG"), CaptureKind::picture);
    EXPECT_EQ(kindOf("/a/b.jpg"), CaptureKind::picture);
    EXPECT_EQ(kindOf("/a/b.jpeg"), CaptureKind::picture);
    EXPECT_EQ(kindOf("/a/b.tiff"), CaptureKind::picture);
    EXPECT_EQ(kindOf("/a/b.MOV"), CaptureKind::video);
    EXPECT_EQ(kindOf("/a/b.mp4"), CaptureKind::video);
    EXPECT_EQ(kindOf("/a/b.c.gif"), CaptureKind::gif);
    EXPECT_EQ(kindOf("/a/b.tif"), CaptureKind::other);
    EXPECT_EQ(kindOf("/a.png/b"), CaptureKind::other);
    EXPECT_EQ(kindOf("/a/png"), CaptureKind::other);
}
