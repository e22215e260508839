#include "Platform/Linux/X11/KeyCodes.h"

#include <gtest/gtest.h>

#include <set>

TEST(KeyCodes, NameTheSamePhysicalKeys)
{
    // S, E, R, Return, Space, F5, Up on a PC keyboard.
    EXPECT_EQ(X11::keyCodeFromVirtual(1), 39);
    EXPECT_EQ(X11::keyCodeFromVirtual(14), 26);
    EXPECT_EQ(X11::keyCodeFromVirtual(15), 27);
    EXPECT_EQ(X11::keyCodeFromVirtual(36), 36);
    EXPECT_EQ(X11::keyCodeFromVirtual(49), 65);
    EXPECT_EQ(X11::keyCodeFromVirtual(96), 71);
    EXPECT_EQ(X11::keyCodeFromVirtual(126), 111);
}

TEST(KeyCodes, NoTwoKeysShareOne)
{
    std::set<int> seen;
    int known = 0;
    for (std::uint32_t code = 0; code < 128; ++code) {
        if (const auto key = X11::keyCodeFromVirtual(code)) {
            seen.insert(*key);
            ++known;
        }
    }
    EXPECT_EQ(static_cast<int>(seen.size()), known);
    EXPECT_GT(known, 90);
}

TEST(KeyCodes, KeysThatAPCLacksAreAbsent)
{
    EXPECT_FALSE(X11::keyCodeFromVirtual(63)); // Fn
    EXPECT_FALSE(X11::keyCodeFromVirtual(128));
    EXPECT_FALSE(X11::keyCodeFromVirtual(4294967295));
}
