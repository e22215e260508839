#include "Media/Camera.h"
#include "Media/FilmTimes.h"
#include "Media/FrameReader.h"
#include "Media/MediaModule.h"
#include "Media/MovieExport.h"
#include "Media/Player.h"

#include <gtest/gtest.h>

#include <future>

TEST(MissingModule, MakesVideosUnreadableAndExportsImpossible)
{
    EXPECT_FALSE(MediaModule::get());
    const QString file = QStringLiteral("/nothing/here.mov");
    EXPECT_FALSE(FrameReader::open(file));
    EXPECT_FALSE(FilmTimes::read(file));
    EXPECT_FALSE(Player::open(file));
    for (const MovieExport::Outcome& outcome :
         {MovieExport::remux(file, file), MovieExport::concatenate({file, file}, file),
          MovieExport::trim(file, 0, 1, file)})
    {
        EXPECT_EQ(outcome.end, MovieExport::End::impossible);
        EXPECT_NE(outcome.reason.find("missing"), std::string::npos);
    }
}

TEST(MissingModule, IsNoCamera)
{
    std::promise<bool> answer;
    Camera::find([&](bool exists) { answer.set_value(exists); });
    EXPECT_FALSE(answer.get_future().get());
    const auto feed = Camera::open(100, [] {});
    feed->setSide(200);
    EXPECT_TRUE(feed->picture().isNull());
}
