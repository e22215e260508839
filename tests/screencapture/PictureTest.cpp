#include "screencapture/Tool.h"
#include "support/RootPainter.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include <sys/stat.h>

namespace {

struct ServerCase {
    const char* name;
    const char* screen;
    std::vector<std::string> options;
    Tool::Witness witness = Tool::Witness::Import;
};

void PrintTo(const ServerCase& server, std::ostream* out)
{
    *out << server.name;
}

class PictureOn : public testing::TestWithParam<ServerCase> {};

TEST_P(PictureOn, EveryPixelIsWhatAnotherProgramSees)
{
    const XServer server(GetParam().screen, GetParam().options);
    RootPainter painter(server.display());
    painter.paintNoise(1);
    const PngImage expected = Tool::reference(server, GetParam().witness);
    // Colourful, or the comparison says nothing.
    std::set<std::uint32_t> colours;
    for (std::uint32_t x = 0; x < expected.width; ++x)
        colours.insert(expected.pixel(x, 7));
    ASSERT_GT(colours.size(), expected.width / 2);

    const std::string size = std::to_string(expected.width) + ',' + std::to_string(expected.height);
    Tool::expectSamePixels(Tool::capture(server, "0,0," + size), expected);
    Tool::expectSamePixels(Tool::capture(server, "17,9,33,21"), Tool::cut(expected, 17, 9, 33, 21));
    Tool::expectSamePixels(Tool::capture(server, "5,6,1,1"), Tool::cut(expected, 5, 6, 1, 1));
}

INSTANTIATE_TEST_SUITE_P(
    Servers, PictureOn,
    testing::Values(
        ServerCase{"Depth24", "801x603x24", {}}, ServerCase{"Depth16", "801x603x16", {}},
        ServerCase{"Depth15", "333x203x15", {}},
        ServerCase{"Depth30", "801x603x30", {}, Tool::Witness::Scrot},
        ServerCase{"Depth24WithoutSharedMemory", "801x603x24", {"-extension", "MIT-SHM"}},
        ServerCase{"Depth16WithoutSharedMemory", "801x603x16", {"-extension", "MIT-SHM"}},
        ServerCase{"Bands", "2600x2100x24", {"-extension", "MIT-SHM"}},
        ServerCase{"WithoutRandr", "801x603x24", {"-extension", "RANDR"}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(Picture, PointerIsNotInIt)
{
    const XServer server("400x300x24");
    RootPainter painter(server.display());
    painter.paintRectangle(0, 0, 400, 300, 0x336699);
    painter.showPointerAt(200, 150);
    // There is one to be seen, or this test says nothing.
    ASSERT_NE(Tool::reference(server, Tool::Witness::ScrotWithPointer).rgb,
              Tool::reference(server, Tool::Witness::Scrot).rgb);
    const PngImage image = Tool::capture(server, "0,0,400,300");
    ASSERT_EQ(image.width, 400U);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        for (std::uint32_t x = 0; x < image.width; ++x)
            ASSERT_EQ(image.pixel(x, y), 0x336699U) << x << ',' << y;
    }
}

TEST(Picture, IsRgbWithoutAlphaAndSaysItsDensity)
{
    const XServer server("400x300x24");
    RootPainter(server.display()).paintNoise(2);
    const PngImage image = Tool::capture(server, "0,0,400,300");
    EXPECT_EQ(image.bitDepth, 8);
    EXPECT_EQ(image.colourType, 2);
    EXPECT_EQ(image.pixelsPerMetreX, 2835U); // 72 an inch
    EXPECT_EQ(image.pixelsPerMetreY, 2835U);
}

TEST(Picture, OtherVisualsAreRefused)
{
    const XServer server("400x300x8");
    const TemporaryFolder folder;
    const Outcome outcome =
        run(Tool::command(server.display(), Tool::still("0,0,10,10", folder / "still.png")));
    EXPECT_NE(Tool::errorLine(outcome).find("TrueColor"), std::string::npos);
    EXPECT_TRUE(folder.names().empty());
}

TEST(Picture, OptionsMayStandInAnyOrderAndForm)
{
    const XServer server("400x300x24");
    RootPainter(server.display()).paintNoise(3);
    const PngImage expected = Tool::cut(Tool::reference(server), 10, 20, 30, 40);
    const TemporaryFolder folder;
    const std::string file = folder / "a b.png";
    const std::vector<std::vector<std::string>> lines{
        {"-R", "10,20,30,40", file},
        {"-R10,20,30,40", "-tpng", "-x", file},
        {"-t", "png", "-x", "-R", "10.0,20,3e1,40", "--", file},
        {"-xR10,20,30,40", file},
        {"-xtpng", "-R", "0,0,1,1", "-x", "-R", "10,20,30,40", file},
    };
    for (const std::vector<std::string>& line : lines) {
        SCOPED_TRACE(testing::PrintToString(line));
        Tool::expectSamePixels(Tool::capture(Tool::command(server.display(), line), file),
                               expected);
        std::filesystem::remove(file);
    }
}

TEST(Picture, NumbersDoNotDependOnTheLocale)
{
    const XServer server("400x300x24");
    RootPainter(server.display()).paintNoise(4);
    const TemporaryFolder folder;
    const std::string file = folder / "still.png";
    Command command = Tool::command(server.display(), Tool::still("10.4,20.5,30,40", file));
    command.environment["LC_ALL"] = "de_DE.UTF-8";
    Tool::expectSamePixels(Tool::capture(command, file),
                           Tool::cut(Tool::reference(server), 10, 21, 30, 40));
}

TEST(Picture, WhatLiesOffTheDesktopIsCutAway)
{
    const XServer server("400x300x24");
    RootPainter(server.display()).paintNoise(5);
    const PngImage whole = Tool::reference(server);
    Tool::expectSamePixels(Tool::capture(server, "-10,-20,30,40"), Tool::cut(whole, 0, 0, 20, 20));
    Tool::expectSamePixels(Tool::capture(server, "390,290,30,40"),
                           Tool::cut(whole, 390, 290, 10, 10));
    Tool::expectSamePixels(Tool::capture(server, "-0,-0,1e9,1e9"), whole);
    Tool::expectSamePixels(Tool::capture(server, "-1e300,-1e300,2e300,2e300"), whole);
}

} // namespace
