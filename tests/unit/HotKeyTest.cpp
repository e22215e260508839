#include "HotKey.h"

#include "fakes/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {

constexpr std::uint32_t optionShift =
    Platform::HotKeyModifier::option | Platform::HotKeyModifier::shift;

} // namespace

// Identifiers are never used again in a process, so one test follows them from the first on.
TEST(HotKey, IdentifiersCountUpAndARefusalUsesOneUp)
{
    FakePlatform::reset();
    auto& platform = FakePlatform::current();
    platform.refusedKeyCodes = {14};

    int captures = 0;
    int recordings = 0;
    auto capture = HotKey::create(1, optionShift, [&] { ++captures; });
    const auto annotate = HotKey::create(14, optionShift, [] {});
    const auto record = HotKey::create(15, optionShift, [&] { ++recordings; });

    EXPECT_TRUE(capture);
    EXPECT_FALSE(annotate);
    EXPECT_TRUE(record);
    EXPECT_THAT(platform.askedIdentifiers, ElementsAre(1, 2, 3));
    EXPECT_EQ(platform.handlersInstalled, 1);
    ASSERT_EQ(platform.hotKeys.count(1), 1u);
    EXPECT_EQ(platform.hotKeys[1].keyCode, 1u);
    EXPECT_EQ(platform.hotKeys[1].modifiers, optionShift);

    platform.press(1, optionShift);
    platform.press(15, optionShift);
    platform.press(15, optionShift);
    EXPECT_EQ(captures, 1);
    EXPECT_EQ(recordings, 2);

    // An identifier that nobody knows is ignored.
    platform.hotKeyHandler(77);
    platform.hotKeyHandler(2);
    EXPECT_EQ(captures + recordings, 3);

    capture.reset();
    EXPECT_EQ(platform.hotKeys.count(1), 0u);
    const auto next = HotKey::create(1, optionShift, [] {});
    EXPECT_THAT(platform.askedIdentifiers, ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(platform.handlersInstalled, 1);
}
