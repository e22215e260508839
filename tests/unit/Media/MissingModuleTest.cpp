#include "Media/FilmTimes.h"
#include "Media/FrameReader.h"
#include "Media/MediaModule.h"
#include "Media/MovieExport.h"
#include "Media/Player.h"

#include <gtest/gtest.h>

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
