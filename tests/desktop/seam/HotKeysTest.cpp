#include "Platform/HotKeys.h"

#include "desktop/seam/OtherClient.h"
#include "desktop/seam/Xdotool.h"
#include "support/EventLoop.h"

#include <QTimer>

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr std::uint32_t optionShift =
    Platform::HotKeyModifier::option | Platform::HotKeyModifier::shift;
constexpr std::uint32_t sKey = 1;
constexpr xcb_keycode_t sKeyOnTheServer = 39;
constexpr std::uint16_t altShift = XCB_MOD_MASK_1 | XCB_MOD_MASK_SHIFT;

/// The real keyboard of the virtual desktop. Presses are counted by identifier.
class HotKeysTest : public testing::Test {
protected:
    void SetUp() override
    {
        Platform::setHotKeyHandler(
            [this](std::uint32_t identifier) { presses.push_back(identifier); });
    }

    void TearDown() override
    {
        if (reference)
            Platform::unregisterHotKey(*reference);
        Platform::setHotKeyHandler({});
        xdotool(QStringLiteral("keyup Alt_L keyup Shift_L keyup s"));
        setLayout("us");
    }

    void registerS()
    {
        reference = Platform::registerHotKey(sKey, optionShift, 7);
        ASSERT_TRUE(reference);
    }

    /// Types keys and lets everything arrive that comes of them.
    void type(const char* words)
    {
        xdotool(QString::fromLatin1(words));
        // The server has handled them by now; a round trip of Qt's own connection brings the rest.
        bool quiet = false;
        QTimer::singleShot(100, qApp, [&quiet] { quiet = true; });
        ASSERT_TRUE(runUntil([&quiet] { return quiet; }));
    }

    static void setLayout(const char* layout)
    {
        output(QStringLiteral("setxkbmap"), {QString::fromLatin1(layout)});
    }

    std::optional<Platform::HotKeyReference> reference;
    std::vector<std::uint32_t> presses;
};

using Presses = std::vector<std::uint32_t>;

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

TEST_F(HotKeysTest, AKeyNamesItsPlaceWhateverTheLayout)
{
    registerS();
    for (const char* layout : {"fr", "dvorak", "ru"}) {
        presses.clear();
        setLayout(layout);
        // By key code: what the key prints differs.
        type("key 64+50+39");
        EXPECT_EQ(presses, Presses{7}) << layout;
    }
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
