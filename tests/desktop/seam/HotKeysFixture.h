#pragma once

#include "Platform/HotKeys.h"

#include "desktop/seam/Xdotool.h"
#include "support/EventLoop.h"

#include <QTimer>

#include <gtest/gtest.h>

#include <vector>

constexpr std::uint32_t optionShift =
    Platform::HotKeyModifier::option | Platform::HotKeyModifier::shift;
constexpr std::uint32_t sKey = 1;

using Presses = std::vector<std::uint32_t>;

/// The real keyboard of the virtual desktop. Presses are counted by identifier.
class HotKeysFixture : public testing::Test {
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
        letArrive();
    }

    /// What another program just had the server do comes to us by events.
    static void letArrive()
    {
        bool quiet = false;
        QTimer::singleShot(100, qApp, [&quiet] { quiet = true; });
        ASSERT_TRUE(runUntil([&quiet] { return quiet; }));
    }

    std::optional<Platform::HotKeyReference> reference;
    std::vector<std::uint32_t> presses;
};
