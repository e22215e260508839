#include "Support/ScreenTable.h"

#include <gtest/gtest.h>

#include <random>

using Geometry::TopLeftRect;

namespace {

using ScreenTable::PixelRect;
using ScreenTable::place;
using ScreenTable::Screen;
using Screens = std::vector<Screen>;

TEST(ScreenTableText, ReadsBackWhatItWrote)
{
    const Screens screens{
        {"eDP-1", {0, 0, 853, 683}, {0, 0, 1280, 1024}, 1.5},
        {"", {-1920, 0.1, 1e-7, 12345678.9}, {-1920, -7, 1, 16777217 - 8}, 1.0 / 3.0},
        {"wall 100% \n\t\x01\x7f\xc3\xa9 %0a", {-0.0, 5, 1, 1}, {0, 0, 1, 1}, 2},
        {std::string("nul\0byte", 8), {0, 0, 1, 1}, {0, 0, 1, 1}, 1},
    };
    const std::string text = ScreenTable::write(screens);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4);
    EXPECT_EQ(text.find('\0'), std::string::npos);
    const auto back = ScreenTable::read(text);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, screens);
}

TEST(ScreenTableText, HasOneKnownForm)
{
    EXPECT_EQ(ScreenTable::write({{"HDMI 1%", {-1280, 0, 853, 683}, {-1280, 0, 1280, 1024}, 1.5}}),
              "-1280 0 853 683 -1280 0 1280 1024 1.5 HDMI 1%25\n");
}

TEST(ScreenTableText, LastLineEndIsOptional)
{
    const auto screens = ScreenTable::read("0 0 10 10 0 0 20 20 2 A\n20 0 5 5 20 0 5 5 1 B");
    ASSERT_TRUE(screens);
    ASSERT_EQ(screens->size(), 2U);
    EXPECT_EQ(screens->at(0).name, "A");
    EXPECT_EQ(screens->at(1).name, "B");
    EXPECT_EQ(screens->at(1).frame, (TopLeftRect{20, 0, 5, 5}));
    EXPECT_EQ(screens->at(1).pixels, (PixelRect{20, 0, 5, 5}));
    EXPECT_EQ(screens->at(1).scale, 1);
}

TEST(ScreenTableText, RefusesWhatIsMalformed)
{
    const char* const malformed[] = {
        "",
        "\n",
        " ",
        "A",
        "0 0 10 10 0 0 10 10 1",              // no name field at all
        "0 0 10 10 0 0 10 10 A",              // a number short
        " 0 0 10 10 0 0 10 10 1 A",           // leading space
        "0  0 10 10 0 0 10 10 1 A",           // two spaces
        "0\t0 10 10 0 0 10 10 1 A",           // another separator
        "+0 0 10 10 0 0 10 10 1 A",           // a plus sign
        "0x0 0 10 10 0 0 10 10 1 A",          // hexadecimal
        "0,5 0 10 10 0 0 10 10 1 A",          // a decimal comma
        "nan 0 10 10 0 0 10 10 1 A",          // not finite
        "0 -inf 10 10 0 0 10 10 1 A",         //
        "0 0 inf 10 0 0 10 10 1 A",           //
        "0 0 10 nan 0 0 10 10 1 A",           //
        "0 0 10 10 0 0 10 10 inf A",          //
        "0 0 10 10 0 0 10 10 nan A",          //
        "1e999 0 10 10 0 0 10 10 1 A",        // beyond a double
        "0 0 0 10 0 0 10 10 1 A",             // no width
        "0 0 10 -10 0 0 10 10 1 A",           // negative height
        "0 0 10 10 0 0 0 10 1 A",             // no pixels
        "0 0 10 10 0 0 10 -1 1 A",            //
        "0 0 10 10 0 0 10 10 0 A",            // no scale
        "0 0 10 10 0 0 10 10 -1 A",           //
        "0 0 10 10 0.5 0 10 10 1 A",          // half a pixel
        "0 0 10 10 0 0 10 99999999999 1 A",   // beyond 32 bits
        "0 0 10 10 2147483647 0 10 10 1 A",   // far edge beyond 32 bits
        "0 0 10 10 0 -2147483648 10 10 1 A",  //
        "0 0 10 10 16777207 0 10 10 1 A",     // far edge one beyond the limit
        "0 0 10 10 0 0 10 10 1 A%",           // broken escapes
        "0 0 10 10 0 0 10 10 1 A%2",          //
        "0 0 10 10 0 0 10 10 1 %zz",          //
        "0 0 10 10 0 0 10 10 1 %2F",          // capitals are never written
        "0 0 10 10 0 0 10 10 1 A\tB",         // a bare control character
        "0 0 10 10 0 0 10 10 1 A\r\n",        //
        "0 0 10 10 0 0 10 10 1 A\n\n",        // an empty line
        "\n0 0 10 10 0 0 10 10 1 A\n",        //
        "0 0 10 10 0 0 10 10 1 A\nnonsense",  // the second line
        "0 0 10 10 0 0 10 10 1 A\n0 0 1 1 0", //
    };
    for (const char* const text : malformed)
        EXPECT_FALSE(ScreenTable::read(text)) << '"' << text << '"';
    // The same line without a fault, so that the table above fails for its faults alone.
    EXPECT_TRUE(ScreenTable::read("0 0 10 10 0 0 10 10 1 A"));
    EXPECT_TRUE(ScreenTable::read("0 0 10 10 0 0 10 10 1 "));
    EXPECT_TRUE(ScreenTable::read("0 0 10 10 16777206 0 10 10 1 A"));
}

TEST(ScreenTableText, WhateverIsReadIsUsableAndStable)
{
    const std::string alphabet = "0123456789.-+einfa %\n\t";
    std::mt19937 random(20240501);
    const std::string good =
        "0 0 853 683 0 0 1280 1024 1.5 DP-1\n-1280 0 10 10 -1280 0 10 10 1 B\n";
    int accepted = 0;
    for (int round = 0; round < 40000; ++round) {
        std::string text = good;
        for (unsigned changes = random() % 4; changes > 0; --changes) {
            const std::size_t at = random() % text.size();
            const char character = random() % 8 == 0 ? static_cast<char>(random() & 255)
                                                     : alphabet[random() % alphabet.size()];
            switch (random() % 3) {
            case 0:
                text[at] = character;
                break;
            case 1:
                text.insert(at, 1, character);
                break;
            case 2:
                text.erase(at, 1);
                break;
            }
        }
        const auto screens = ScreenTable::read(text);
        if (!screens)
            continue;
        ++accepted;
        ASSERT_FALSE(screens->empty());
        for (const Screen& screen : *screens) {
            ASSERT_TRUE(screen.frame.width > 0 && screen.frame.height > 0 && screen.scale > 0);
            ASSERT_TRUE(screen.pixels.width > 0 && screen.pixels.height > 0);
        }
        ASSERT_EQ(ScreenTable::read(ScreenTable::write(*screens)), screens) << text;
        const auto placement = place({-3, 4, 500, 300.5}, *screens);
        if (placement) {
            ASSERT_TRUE(placement->pixels.width > 0 && placement->pixels.height > 0) << text;
        }
    }
    EXPECT_GT(accepted, 10000);
    EXPECT_LT(accepted, 40000);
}

} // namespace
