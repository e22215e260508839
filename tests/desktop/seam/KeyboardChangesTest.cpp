// Hot keys on a keyboard that is changed while the program runs. Keys are named by their codes:
// what they print differs. 39 is the key right of A, 50 the left Shift, 64 and 133 are the keys
// that say Alt and Super on a PC keyboard.

#include "desktop/seam/HotKeysFixture.h"

namespace {

class KeyboardChangesTest : public HotKeysFixture {
protected:
    void SetUp() override
    {
        HotKeysFixture::SetUp();
        registerS();
    }

    void TearDown() override
    {
        HotKeysFixture::TearDown();
        setLayout("-layout us");
    }

    /// Replaces the whole keyboard.
    static void setLayout(const char* words)
    {
        output(QStringLiteral("setxkbmap"), QStringList{QStringLiteral("-option"), QString()} +
                                                QString::fromLatin1(words).split(QLatin1Char(' ')));
        letArrive();
    }

    /// Changes single keys, as the X11 protocol did before there were layouts.
    static void modify(std::initializer_list<const char*> expressions)
    {
        QStringList arguments;
        for (const char* expression : expressions)
            arguments << QStringLiteral("-e") << QString::fromLatin1(expression);
        output(QStringLiteral("xmodmap"), arguments);
        letArrive();
    }

    /// What comes of pressing keys now.
    Presses pressesOf(const char* words)
    {
        presses.clear();
        type(words);
        return presses;
    }

    static constexpr const char* altShiftS = "key 64+50+39";
    static constexpr const char* superShiftS = "key 133+50+39";
};

} // namespace

TEST_F(KeyboardChangesTest, AKeyNamesItsPlaceWhateverTheLayout)
{
    for (const char* layout : {"fr", "dvorak", "ru", "gr"}) {
        setLayout(layout);
        EXPECT_EQ(pressesOf(altShiftS), Presses{7}) << layout;
    }
    EXPECT_EQ(pressesOf("keydown 64 keydown 50 keydown 39 sleep 0.9 keyup 39 keyup 50 keyup 64"),
              Presses{7})
        << "held under the last of them";
}

TEST_F(KeyboardChangesTest, AKeyWorksInEachOfTwoLayoutsThatAreSwitchedByAKey)
{
    setLayout("us,ru -option grp:menu_toggle");
    EXPECT_EQ(pressesOf(altShiftS), Presses{7});
    EXPECT_EQ(pressesOf("key 135 key 64+50+39"), Presses{7}) << "the second layout";
    EXPECT_EQ(pressesOf("key 135 key 64+50+39"), Presses{7}) << "the first one again";
}

TEST_F(KeyboardChangesTest, AltIsTheKeyThatTheLayoutMakesAlt)
{
    setLayout("us -option altwin:swap_alt_win");
    EXPECT_EQ(pressesOf(superShiftS), Presses{7});
    EXPECT_EQ(pressesOf(altShiftS), Presses{});
    setLayout("us");
    EXPECT_EQ(pressesOf(altShiftS), Presses{7});
    EXPECT_EQ(pressesOf(superShiftS), Presses{});
}

TEST_F(KeyboardChangesTest, AltMaySetAnotherModifierAndTheOldOneAgain)
{
    modify({"clear mod1", "clear mod4", "add mod4 = Alt_L Meta_L", "add mod1 = Super_L Super_R"});
    EXPECT_EQ(pressesOf(altShiftS), Presses{7});
    EXPECT_EQ(pressesOf(superShiftS), Presses{});
    // The server tells of this one by other events than of the one before.
    setLayout("us");
    EXPECT_EQ(pressesOf(altShiftS), Presses{7});
    EXPECT_EQ(pressesOf(superShiftS), Presses{});
}

TEST_F(KeyboardChangesTest, AltMayMoveToAnotherKey)
{
    modify({"keycode 64 = Super_L", "keycode 133 = Alt_L"});
    EXPECT_EQ(pressesOf(superShiftS), Presses{7});
    EXPECT_EQ(pressesOf(altShiftS), Presses{});
}

TEST_F(KeyboardChangesTest, ScrollLockDoesNotMatterWhereItIsAModifier)
{
    // As people do whose keyboard has its light on that lock.
    modify({"add mod3 = Scroll_Lock"});
    EXPECT_EQ(pressesOf(altShiftS), Presses{7});
    EXPECT_EQ(pressesOf("key Scroll_Lock key 64+50+39"), Presses{7});
    EXPECT_EQ(pressesOf("key Num_Lock key Caps_Lock key 64+50+39"), Presses{7});
    type("key Num_Lock key Caps_Lock key Scroll_Lock");
}

TEST_F(KeyboardChangesTest, StickyModifiersMayBePressedOneAfterTheOther)
{
    const auto setSticky = [](bool on) {
        // XkbChangeEnabledControls() of the core keyboard; 8 is the control of sticky keys.
        const QString commands = QStringLiteral("import ctypes\n"
                                                "x = ctypes.CDLL('libX11.so.6')\n"
                                                "x.XOpenDisplay.restype = ctypes.c_void_p\n"
                                                "d = ctypes.c_void_p(x.XOpenDisplay(None))\n"
                                                "assert x.XkbChangeEnabledControls(d, 256, 8, %1)\n"
                                                "x.XSync(d, 0)\n")
                                     .arg(on ? 8 : 0);
        output(QStringLiteral("python3"), {QStringLiteral("-c"), commands});
    };
    setSticky(true);
    EXPECT_EQ(pressesOf("key 64 key 50 key 39"), Presses{7});
    EXPECT_EQ(pressesOf("key 39"), Presses{}) << "the modifiers are let go";
    setSticky(false);
    EXPECT_EQ(pressesOf("key 64 key 50 key 39"), Presses{});
}
