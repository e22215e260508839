#include "Arguments.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using Geometry::TopLeftRect;

namespace {

Result<Arguments> parse(const std::vector<const char*>& words)
{
    return parseArguments(words);
}

TEST(ParseRectangle, ReadsDecimalNumbers)
{
    EXPECT_EQ(parseRectangle("1,2,3,4"), (TopLeftRect{1, 2, 3, 4}));
    EXPECT_EQ(parseRectangle("-1.5,0.25,1e3,.5"), (TopLeftRect{-1.5, 0.25, 1000, 0.5}));
    EXPECT_EQ(parseRectangle("-0,-0.0,10,10"), (TopLeftRect{0, 0, 10, 10}));
    EXPECT_EQ(parseRectangle("0000012,1,1,-5"), (TopLeftRect{12, 1, 1, -5}));
    EXPECT_EQ(parseRectangle("1e-400,0,1,1"), std::nullopt); // too small for a double
}

TEST(ParseRectangle, RefusesEverythingElse)
{
    for (const char* const text : {"",
                                   ",",
                                   ",,,",
                                   "1",
                                   "1,2,3",
                                   "1,2,3,",
                                   "1,2,3,4,",
                                   "1,2,3,4,5",
                                   "1,2,3,4 ",
                                   " 1,2,3,4",
                                   "1, 2,3,4",
                                   "+1,2,3,4",
                                   "1,2,3,0x4",
                                   "1,2,3,4p1",
                                   "1,2,nan,4",
                                   "1,2,NAN(1),4",
                                   "inf,2,3,4",
                                   "1,-infinity,3,4",
                                   "1,2,3,1e309",
                                   "1.2.3,2,3,4",
                                   "1;2;3;4",
                                   "1,2,3,4\n",
                                   "1'000,2,3,4",
                                   "-,2,3,4",
                                   ".,2,3,4",
                                   "e1,2,3,4"})
        EXPECT_EQ(parseRectangle(text), std::nullopt) << '"' << text << '"';
}

TEST(ParseRectangle, WhateverItAcceptsIsFiniteAndHasFourParts)
{
    const std::string alphabet = "0123456789,,,,.-+eEinfax \t";
    std::mt19937 random(7);
    int accepted = 0;
    for (int round = 0; round < 200000; ++round) {
        std::string text = round % 2 ? "10,20.5,300,4e1" : "";
        for (auto changes = 1 + random() % 3; changes > 0; --changes) {
            const char character = random() % 8 == 0 ? static_cast<char>(random() & 255)
                                                     : alphabet[random() % alphabet.size()];
            text.insert(random() % (text.size() + 1), 1, character);
        }
        const auto rectangle = parseRectangle(text);
        if (!rectangle)
            continue;
        ++accepted;
        ASSERT_TRUE(std::isfinite(rectangle->x) && std::isfinite(rectangle->y) &&
                    std::isfinite(rectangle->width) && std::isfinite(rectangle->height))
            << text;
        ASSERT_EQ(std::count(text.begin(), text.end(), ','), 3) << text;
        ASSERT_EQ(text.find_first_not_of("0123456789.,-+eE"), std::string::npos) << text;
    }
    EXPECT_GT(accepted, 1000);
}

TEST(ParseArguments, ReadsTheWholeLine)
{
    const auto arguments = parse({"-x", "-t", "png", "-R", "1,2,3,4", "a.png"});
    ASSERT_TRUE(arguments);
    EXPECT_EQ(arguments->rectangle, (TopLeftRect{1, 2, 3, 4}));
    EXPECT_EQ(arguments->file, "a.png");
}

TEST(ParseArguments, TakesNegativeCornersAndNamesWithHyphens)
{
    const auto apart = parse({"-R", "-1,-2,3,4", "--", "-x"});
    ASSERT_TRUE(apart);
    EXPECT_EQ(apart->rectangle, (TopLeftRect{-1, -2, 3, 4}));
    EXPECT_EQ(apart->file, "-x");
    const auto together = parse({"-xR-1,-2,3,4", "-"});
    ASSERT_TRUE(together);
    EXPECT_EQ(together->rectangle, (TopLeftRect{-1, -2, 3, 4}));
    EXPECT_EQ(together->file, "-");
}

TEST(ParseArguments, OfTwoRectanglesTheLastCounts)
{
    const auto arguments = parse({"-R", "1,2,3,4", "-R5,6,7,8", "a"});
    ASSERT_TRUE(arguments);
    EXPECT_EQ(arguments->rectangle, (TopLeftRect{5, 6, 7, 8}));
}

TEST(ParseArguments, MoviesHaveOptionsOfTheirOwn)
{
    const auto plain = parse({"-v", "-R", "0,0,1,1", "f"});
    ASSERT_TRUE(plain);
    EXPECT_TRUE(plain->isMovie);
    EXPECT_FALSE(plain->showsPointer || plain->showsClicks || plain->hasSound);

    const auto all = parse({"-v", "-x", "-C", "-R", "0,0,1,1", "-k", "-g", "f"});
    ASSERT_TRUE(all);
    EXPECT_TRUE(all->isMovie && all->showsPointer && all->showsClicks && all->hasSound);
    EXPECT_EQ(all->file, "f");

    const auto together = parse({"-gkxvR0,0,1,1", "f"});
    ASSERT_TRUE(together);
    EXPECT_TRUE(together->isMovie && together->showsClicks && together->hasSound);
    EXPECT_FALSE(together->showsPointer);
}

TEST(ParseArguments, StillsAndMoviesDoNotMix)
{
    for (const char* const option : {"-C", "-k", "-g"})
        EXPECT_FALSE(parse({option, "-R", "0,0,1,1", "f"})) << option;
    EXPECT_FALSE(parse({"-v", "-t", "png", "-R", "0,0,1,1", "f"}));
    EXPECT_FALSE(parse({"-t", "png", "-R", "0,0,1,1", "-v", "f"}));
    const auto still = parse({"-x", "-t", "png", "-R", "0,0,1,1", "f"});
    ASSERT_TRUE(still);
    EXPECT_FALSE(still->isMovie);
}

TEST(ParseArguments, WhateverItAcceptsIsComplete)
{
    const std::vector<std::string> pieces{"-x",    "-t",        "png", "-R", "0,0,10,10", "f.png",
                                          "-tpng", "-R1,1,2,2", "--",  "-",  "",          "-q",
                                          "-xt",   "0,0,0,0",   "-xR", "x",  "-tgif"};
    std::mt19937 random(8);
    int accepted = 0;
    int refused = 0;
    for (int round = 0; round < 100000; ++round) {
        std::vector<const char*> words;
        for (auto count = random() % 8; count > 0; --count)
            words.push_back(pieces[random() % pieces.size()].c_str());
        const auto arguments = parse(words);
        if (!arguments) {
            ++refused;
            ASSERT_FALSE(arguments.failure().message.empty());
            continue;
        }
        ++accepted;
        ASSERT_EQ(arguments->file, words.back()) << "the file is the last word";
        ASSERT_FALSE(arguments->file.empty());
        ASSERT_GT(arguments->rectangle.width, 0);
        ASSERT_GT(arguments->rectangle.height, 0);
    }
    EXPECT_GT(accepted, 100);
    EXPECT_GT(refused, 10000);
}

} // namespace
