#include "Media/CameraModule.h"
#include "Media/MediaModule.h"
#include "Media/PlayerModule.h"
#include "support/EventLoop.h"

#include <gtest/gtest.h>

TEST(LoadedModule, IsFoundFromTheProgramAndWorks)
{
    const MediaModule* module = MediaModule::get();
    ASSERT_TRUE(module);
    EXPECT_EQ(MediaModule::get(), module);
    const auto reader = FrameReader::open(QStringLiteral("/nothing/here.mp4"));
    ASSERT_FALSE(reader);
    EXPECT_NE(reader.failure().message.find("/nothing/here.mp4"), std::string::npos);
    const auto outcome = MovieExport::remux(QStringLiteral("/nothing/here.mov"), {});
    EXPECT_EQ(outcome.end, MovieExport::End::failed);
    EXPECT_NE(outcome.reason.find("/nothing/here.mov"), std::string::npos);
}

TEST(LoadedModule, ThePlayerIsFoundLikewise)
{
    ASSERT_TRUE(PlayerModule::get());
    const std::unique_ptr<Player> player = Player::open(QStringLiteral("/nothing/here.mp4"));
    ASSERT_TRUE(player);
    EXPECT_TRUE(runUntil([&] { return player->state().phase == PlayerState::Phase::failed; }));
}

TEST(LoadedModule, TheCameraIsFoundLikewise)
{
    const CameraModule* module = CameraModule::get();
    ASSERT_TRUE(module);
    EXPECT_TRUE(module->open);
}
