// The hot keys on a keyboard whose layout changes while the program runs.

#include "desktop/flow/FlowTest.h"
#include "desktop/harness/Commands.h"

using namespace Desktop;

namespace {

class KeyboardFlow : public FlowTest {
protected:
    Outcome<void> xdotool(const char* words) const
    {
        const auto output =
            run(QStringLiteral("xdotool"), QString::fromLatin1(words).split(QLatin1Char(' ')),
                desktop->environment());
        return output ? Outcome<void>() : output.failure();
    }

    /// Holds the keys for a while, as a hand does, closes the overlay and looks for another one.
    void expectOneOverlay(const char* keys)
    {
        SCOPED_TRACE(keys);
        ASSERT_TRUE(succeeded(xdotool(keys)));
        ASSERT_TRUE(succeeded(tamrik->awaitOverlay()));
        ASSERT_TRUE(succeeded(input().key(QStringLiteral("Escape"))));
        ASSERT_TRUE(succeeded(tamrik->awaitNoOverlay()));
    }

    void setLayout(const char* words)
    {
        const auto output =
            run(QStringLiteral("setxkbmap"), QString::fromLatin1(words).split(QLatin1Char(' ')),
                desktop->environment());
        ASSERT_TRUE(succeeded(output));
    }
};

} // namespace

TEST_F(KeyboardFlow, TheHotKeyIsTheSameKeyInEveryLayoutAndFiresOnceAPress)
{
    begin({});
    // The codes of Alt, Shift and the key right of A; 135 switches between two layouts.
    setLayout("ru");
    expectOneOverlay("key 64+50+39");
    setLayout("us,ru -option grp:menu_toggle");
    expectOneOverlay("key 64+50+39");
    expectOneOverlay("key 135 key 64+50+39");
    expectOneOverlay("key 135 key 64+50+39");

    // Held until after the overlay has gone, the key opens no other one.
    ASSERT_TRUE(succeeded(xdotool("keydown 64 keydown 50 keydown 39 sleep 0.8")));
    ASSERT_TRUE(succeeded(tamrik->awaitOverlay()));
    ASSERT_TRUE(succeeded(input().click({900, 600}))); // cancels
    ASSERT_TRUE(succeeded(tamrik->awaitNoOverlay()));
    ASSERT_TRUE(succeeded(xdotool("sleep 0.3 keyup 39 keyup 50 keyup 64")));
    EXPECT_TRUE(tamrik->overlay().isEmpty());
    expectOneOverlay("key 64+50+39");
    EXPECT_TRUE(tamrik->captures().isEmpty());
}
