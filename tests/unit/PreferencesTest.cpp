#include "Preferences.h"

#include "Platform/Defaults.h"
#include "support/ConfigFolder.h"
#include "support/Printers.h"

#include <gtest/gtest.h>

namespace {

/// Preferences over the real store, in a configuration folder of the test's own.
class PreferencesTest : public testing::Test {
protected:
    /// What somebody outside put into the store.
    void store(const QByteArray& json) const { config.write("tamrik/preferences.json", json); }

    Preferences open() const { return Preferences(Platform::openDefaults()); }

    ConfigFolder config;
};

} // namespace

TEST_F(PreferencesTest, DefaultsWhenNothingIsStored)
{
    const Preferences preferences = open();
    EXPECT_FALSE(preferences.recordMic());
    EXPECT_FALSE(preferences.lastCapturePath());
    EXPECT_EQ(preferences.hotKeyCode(), 1u);
    EXPECT_EQ(preferences.hotKeyModifiers(), 2560u);
    EXPECT_EQ(preferences.chipPosition(), ChipPosition::bottomLeft);
    EXPECT_EQ(preferences.chipCustomOrigin(), (Geometry::Point{24, 24}));
}

TEST_F(PreferencesTest, EveryKeyOutlivesItsObject)
{
    {
        Preferences preferences = open();
        preferences.setRecordMic(true);
        preferences.setLastCapturePath(QStringLiteral("/tmp/Tamrik ünï.png"));
        preferences.saveCustom({120.5, 300});
    }
    const Preferences preferences = open();
    EXPECT_TRUE(preferences.recordMic());
    EXPECT_EQ(preferences.lastCapturePath(), QStringLiteral("/tmp/Tamrik ünï.png"));
    EXPECT_EQ(preferences.chipPosition(), ChipPosition::custom);
    EXPECT_EQ(preferences.chipCustomOrigin(), (Geometry::Point{120.5, 300}));
}

TEST_F(PreferencesTest, WritingNoPathRemovesTheKey)
{
    Preferences preferences = open();
    preferences.setLastCapturePath(QStringLiteral("/tmp/a.png"));
    preferences.setLastCapturePath(std::nullopt);
    EXPECT_FALSE(open().lastCapturePath());
}

TEST_F(PreferencesTest, AChangeFromOutsideIsSeenAtOnce)
{
    const Preferences preferences = open();
    EXPECT_FALSE(preferences.recordMic());
    store(R"({"recordMic": true})");
    EXPECT_TRUE(preferences.recordMic());
}

TEST_F(PreferencesTest, AnUnknownPositionIsBottomLeft)
{
    store(R"({"chipPosition": "middle"})");
    EXPECT_EQ(open().chipPosition(), ChipPosition::bottomLeft);
    store(R"({"chipPosition": 3})");
    EXPECT_EQ(open().chipPosition(), ChipPosition::bottomLeft);
}

TEST_F(PreferencesTest, OnlyThePresenceOfXDecidesTheCustomOrigin)
{
    store(R"({"chipPosition": "custom", "chipCustomY": 500})");
    EXPECT_EQ(open().chipCustomOrigin(), (Geometry::Point{24, 24}));
    store(R"({"chipCustomX": 77})");
    EXPECT_EQ(open().chipCustomOrigin(), (Geometry::Point{77, 0}));
    store(R"({"chipCustomX": "left", "chipCustomY": 5.5})");
    EXPECT_EQ(open().chipCustomOrigin(), (Geometry::Point{0, 5.5}));
}

TEST_F(PreferencesTest, AHotKeyOfAnotherTypeCountsAsAbsent)
{
    for (const char* json :
         {R"({"hotKeyCode": "15"})", R"({"hotKeyCode": true})", R"({"hotKeyCode": 1.5})",
          R"({"hotKeyCode": null})", R"({"hotKeyCode": [15]})", R"({"hotKeyCode": {"a": 15}})"})
    {
        store(json);
        EXPECT_EQ(open().hotKeyCode(), 1u) << json;
    }
    store(R"({"hotKeyModifiers": "512"})");
    EXPECT_EQ(open().hotKeyModifiers(), 2560u);
}

TEST_F(PreferencesTest, AHotKeyMayUseTheWholeUnsignedRange)
{
    store(R"({"hotKeyCode": 0, "hotKeyModifiers": 4294967295})");
    EXPECT_EQ(open().hotKeyCode(), 0u);
    EXPECT_EQ(open().hotKeyModifiers(), 4294967295u);
}

using PreferencesDeathTest = PreferencesTest;

TEST_F(PreferencesDeathTest, AHotKeyOutsideTheUnsignedRangeIsFatal)
{
    store(R"({"hotKeyCode": -1})");
    EXPECT_EXIT((void)open().hotKeyCode(), testing::KilledBySignal(SIGABRT),
                "^Tamrik: preference hotKeyCode is outside the unsigned 32-bit range: -1\n$");
    store(R"({"hotKeyModifiers": 4294967296})");
    EXPECT_EXIT((void)open().hotKeyModifiers(), testing::KilledBySignal(SIGABRT),
                "^Tamrik: preference hotKeyModifiers is outside .* range: 4294967296\n$");
    store(R"({"hotKeyCode": 99999999999999999999})");
    EXPECT_EXIT((void)open().hotKeyCode(), testing::KilledBySignal(SIGABRT), "hotKeyCode");
}
