#include "desktop/seam/HotKeysFixture.h"
#include "desktop/seam/OtherClient.h"

namespace {

constexpr xcb_keycode_t sKeyOnTheServer = 39;
constexpr std::uint16_t altShift = XCB_MOD_MASK_1 | XCB_MOD_MASK_SHIFT;

class HotKeysTest : public HotKeysFixture {};

} // namespace

TEST_F(HotKeysTest, APressCallsTheHandlerWithItsIdentifier)
{
    registerS();
    type("key alt+shift+s");
    EXPECT_EQ(presses, Presses{7});
    type("key alt+shift+s key alt+shift+s");
    EXPECT_EQ(presses, (Presses{7, 7, 7}));
}

TEST_F(HotKeysTest, OtherModifiersAreOtherKeys)
{
    registerS();
    type("key alt+s key shift+s key ctrl+alt+shift+s key super+alt+shift+s key s key alt+shift+d");
    EXPECT_TRUE(presses.empty());
}

TEST_F(HotKeysTest, AHeldKeyFiresOnce)
{
    registerS();
    type("keydown alt keydown shift keydown s sleep 1.2 keyup s keyup shift keyup alt");
    EXPECT_EQ(presses, Presses{7});
}

TEST_F(HotKeysTest, TwoQuickPressesFireTwice)
{
    registerS();
    type("keydown alt keydown shift keydown s keyup s sleep 0.02 keydown s keyup s keyup shift "
         "keyup alt");
    EXPECT_EQ(presses, (Presses{7, 7}));
}

TEST_F(HotKeysTest, CapsLockAndNumLockDoNotMatter)
{
    registerS();
    type("key Caps_Lock key alt+shift+s");
    type("key Num_Lock key alt+shift+s");
    type("key Caps_Lock key alt+shift+s");
    type("key Num_Lock key alt+shift+s");
    EXPECT_EQ(presses, (Presses{7, 7, 7, 7}));
}

TEST_F(HotKeysTest, AKeyThatAnotherProgramHoldsIsRefusedAtOnce)
{
    OtherClient other;
    ASSERT_TRUE(other.grabKey(sKeyOnTheServer, altShift));
    EXPECT_FALSE(Platform::registerHotKey(sKey, optionShift, 1));
}

TEST_F(HotKeysTest, ARefusalLeavesTheOtherLockVariantsFree)
{
    OtherClient first;
    ASSERT_TRUE(first.grabKey(sKeyOnTheServer, altShift | XCB_MOD_MASK_2));
    ASSERT_FALSE(Platform::registerHotKey(sKey, optionShift, 1));
    OtherClient second;
    EXPECT_TRUE(second.grabKey(sKeyOnTheServer, altShift));
    EXPECT_TRUE(second.grabKey(sKeyOnTheServer, altShift | XCB_MOD_MASK_LOCK));
    EXPECT_TRUE(second.grabKey(sKeyOnTheServer, altShift | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2));
}

TEST_F(HotKeysTest, UnregisteringFreesTheKey)
{
    registerS();
    Platform::unregisterHotKey(*reference);
    reference.reset();
    type("key alt+shift+s");
    EXPECT_TRUE(presses.empty());
    OtherClient other;
    EXPECT_TRUE(other.grabKey(sKeyOnTheServer, altShift));
}

TEST_F(HotKeysTest, AKeyThatIsOursAlreadyIsRefusedAndStaysOurs)
{
    // The server would grant one client the same key again; giving one of the two back would then
    // take the other one's away.
    registerS();
    EXPECT_FALSE(Platform::registerHotKey(sKey, optionShift, 8));
    type("key alt+shift+s");
    EXPECT_EQ(presses, Presses{7});
}

TEST_F(HotKeysTest, EveryModifierOfTheMaskIsGrabbed)
{
    namespace Bit = Platform::HotKeyModifier;
    reference = Platform::registerHotKey(14, Bit::command | Bit::control, 9);
    ASSERT_TRUE(reference);
    type("key ctrl+super+e key ctrl+e key super+e");
    EXPECT_EQ(presses, Presses{9});
}

TEST_F(HotKeysTest, AKeyCodeThatNoKeyHasIsRefused)
{
    EXPECT_FALSE(Platform::registerHotKey(4000, optionShift, 1));
    EXPECT_FALSE(Platform::registerHotKey(4294967295, optionShift, 1));
}

TEST_F(HotKeysTest, TheHandlerMayUnregisterItsOwnKey)
{
    registerS();
    Platform::setHotKeyHandler([this](std::uint32_t identifier) {
        presses.push_back(identifier);
        Platform::unregisterHotKey(*reference);
        reference.reset();
    });
    type("key alt+shift+s key alt+shift+s");
    EXPECT_EQ(presses, Presses{7});
}
