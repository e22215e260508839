#include "ChipThumbnail.h"

#include "support/Printers.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/Videos.h"

#include <gtest/gtest.h>

#include <fstream>
#include <future>

#include <sys/stat.h>

using Geometry::Size;

namespace {

class ChipThumbnailTest : public testing::Test {
protected:
    std::optional<ChipContent> load(const std::string& path) const
    {
        return ChipThumbnail::load(QUrl::fromLocalFile(QString::fromStdString(path)));
    }

    /// A picture of so many pixels: its left half red, its right half blue.
    std::string picture(int width, int height, double density = 1, const char* name = "a.png") const
    {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(Qt::red);
        for (int y = 0; y < height; ++y) {
            for (int x = width / 2; x < width; ++x)
                image.setPixel(x, y, qRgb(0, 0, 255));
        }
        constexpr double metresAnInch = 0.0254;
        image.setDotsPerMeterX(qRound(72 * density / metresAnInch));
        image.setDotsPerMeterY(qRound(72 * density / metresAnInch));
        std::string path = m_folder / name;
        EXPECT_TRUE(image.save(QString::fromStdString(path)));
        return path;
    }

    /// Two seconds of grey frames.
    std::string video(const char* name, const std::vector<std::string>& options = {}) const
    {
        const std::string raw = m_folder / "raw";
        std::ofstream(raw, std::ios::binary) << Videos::greyFrames(2 * Videos::frameRate);
        std::string path = m_folder / name;
        Videos::encode(raw, options, path);
        return path;
    }

    std::string text(const char* name) const
    {
        std::string path = m_folder / name;
        std::ofstream(path) << "#EXTM3U\nnothing that can be seen\n";
        return path;
    }

    TemporaryFolder m_folder;
};

} // namespace

TEST_F(ChipThumbnailTest, APictureIsAsFineAsAScreenOfScaleTwoShows)
{
    const auto content = load(picture(2880, 1800));
    ASSERT_TRUE(content);
    EXPECT_EQ(content->pictureSize, (Size{2880, 1800}));
    EXPECT_EQ(content->thumbnail.size(), QSize(440, 275));
    EXPECT_EQ(content->thumbnail.pixelColor(100, 100), QColor(Qt::red));
    EXPECT_EQ(content->thumbnail.pixelColor(340, 100), QColor(Qt::blue));
    EXPECT_FALSE(content->badge);
}

TEST_F(ChipThumbnailTest, APicturesSizeInPointsFollowsItsDensity)
{
    const auto content = load(picture(400, 200, 2));
    ASSERT_TRUE(content);
    EXPECT_EQ(content->pictureSize, (Size{200, 100}));
    EXPECT_EQ(content->thumbnail.size(), QSize(400, 200));
}

TEST_F(ChipThumbnailTest, ASmallPictureIsCroppedToTheChipsShapeAndNotEnlarged)
{
    // The chip is 100 x 48.
    const auto content = load(picture(40, 30));
    ASSERT_TRUE(content);
    EXPECT_EQ(content->pictureSize, (Size{40, 30}));
    EXPECT_EQ(content->thumbnail.width(), 40);
    EXPECT_NEAR(content->thumbnail.height(), 40 * 48 / 100.0, 1);
}

TEST_F(ChipThumbnailTest, ATallPictureIsShownByItsMiddle)
{
    const auto content = load(picture(100, 2000));
    ASSERT_TRUE(content);
    EXPECT_EQ(content->thumbnail.size(), QSize(100, 150));
}

TEST_F(ChipThumbnailTest, AVideoShowsItsFrameAtATenthOfASecondAndItsDuration)
{
    for (const char* name : {"a.mp4", "a.MOV"}) {
        const auto content = load(video(name));
        ASSERT_TRUE(content) << name;
        EXPECT_EQ(content->pictureSize, (Size{64, 48}));
        EXPECT_EQ(Videos::numberOf(qRed(content->thumbnail.pixel(20, 10))), 3);
        EXPECT_EQ(content->badge, QStringLiteral("▶ 0:02"));
        // As the chip, 100 x 48, crops it.
        EXPECT_EQ(content->thumbnail.width(), 64);
        EXPECT_NEAR(content->thumbnail.height(), 64 * 48 / 100.0, 1);
    }
}

TEST_F(ChipThumbnailTest, ALargeVideoCountsAsSixHundredPoints)
{
    const auto content = load(video("large.mp4", {"-vf", "scale=1280:720", "-t", "0.3"}));
    ASSERT_TRUE(content);
    EXPECT_EQ(content->pictureSize.width, 600);
    EXPECT_NEAR(content->pictureSize.height, 337.5, 0.5);
    EXPECT_NEAR(content->thumbnail.width(), 440, 1);
    EXPECT_NEAR(content->thumbnail.height(), 248, 1);
    EXPECT_EQ(content->badge, QStringLiteral("▶ 0:00"));
}

TEST_F(ChipThumbnailTest, WhatCannotBeShownIsAbsent)
{
    EXPECT_FALSE(load(text("text.png")));
    EXPECT_FALSE(load(text("text.mp4")));
    EXPECT_FALSE(load(text("text")));
    EXPECT_FALSE(load(m_folder / "nothing.png"));
    EXPECT_FALSE(load(m_folder / "nothing.mov"));
    EXPECT_FALSE(load(m_folder.path().string()));
    for (const char* name : {"fifo.png", "fifo.mp4"}) {
        const std::string path = m_folder / name;
        ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
        EXPECT_FALSE(load(path));
    }
}

TEST_F(ChipThumbnailTest, AVideoNamedAsAPictureIsNone)
{
    const std::string path = m_folder / "video.png";
    ASSERT_EQ(std::rename(video("a.mp4").c_str(), path.c_str()), 0);
    EXPECT_FALSE(load(path));
}

TEST_F(ChipThumbnailTest, InTheBackgroundItIsTheSame)
{
    std::promise<std::optional<ChipContent>> promise;
    ChipThumbnail::loadInBackground(
        QUrl::fromLocalFile(QString::fromStdString(picture(400, 200, 2))),
        [&](const auto& content) { promise.set_value(content); });
    const auto content = promise.get_future().get();
    ASSERT_TRUE(content);
    EXPECT_EQ(content->pictureSize, (Size{200, 100}));
}
