#include "screencapture/Tool.h"
#include "support/RootPainter.h"

#include "Platform/Linux/X11/Connection.h"
#include "Platform/Linux/X11/Screens.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

/// Divides one server's screen into monitors; "*" before a name makes the primary one.
void setMonitor(const XServer& server, const std::string& name, const std::string& geometry,
                const std::string& output = "none")
{
    const Outcome outcome =
        run({{"xrandr", "--setmonitor", name, geometry, output}, {{"DISPLAY", server.display()}}});
    ASSERT_EQ(outcome.status, 0) << outcome.error;
}

void setResources(const XServer& server, const std::string& resources)
{
    const TemporaryFolder folder;
    writeFile(folder / "resources", resources);
    const Outcome outcome =
        run({{"xrdb", "-load", "-nocpp", folder / "resources"}, {{"DISPLAY", server.display()}}});
    ASSERT_EQ(outcome.status, 0) << outcome.error;
}

PngImage captureWith(const XServer& server, const std::string& table, const std::string& rectangle)
{
    const TemporaryFolder folder;
    const std::string file = folder / "still.png";
    Command command = Tool::command(server.display(), Tool::still(rectangle, file));
    command.environment["TAMRIK_SCREENS"] = table;
    return Tool::capture(command, file);
}

class Monitors : public testing::Test {
protected:
    Monitors() { RootPainter(m_server.display()).paintNoise(11); }

    void expectPart(const std::string& rectangle, std::uint32_t x, std::uint32_t y,
                    std::uint32_t width, std::uint32_t height)
    {
        SCOPED_TRACE(rectangle);
        if (m_whole.rgb.empty())
            m_whole = Tool::reference(m_server);
        Tool::expectSamePixels(Tool::capture(m_server, rectangle),
                               Tool::cut(m_whole, x, y, width, height));
    }

    XServer m_server{"800x600x24"};
    PngImage m_whole;
};

TEST_F(Monitors, PointsCountFromThePrimaryOne)
{
    setMonitor(m_server, "LEFT", "301/80x203/60+0+11", "screen");
    setMonitor(m_server, "*RIGHT", "400/106x300/80+301+101");
    expectPart("0,0,400,300", 301, 101, 400, 300);
    expectPart("-301,-90,301,203", 0, 11, 301, 203);
    expectPart("-5.5,-1,10,10", 296, 100, 10, 10);
}

TEST_F(Monitors, WhatNoneShowsIsCutAway)
{
    // The top left monitor is the primary one; between it and the other lies nothing.
    setMonitor(m_server, "*A", "300/80x200/60+0+0", "screen");
    setMonitor(m_server, "B", "200/53x200/53+350+250");
    expectPart("-50,-50,1000,1000", 0, 0, 550, 450);
    expectPart("250,150,200,60", 250, 150, 50, 50);
    const TemporaryFolder folder;
    const Outcome outcome =
        run(Tool::command(m_server.display(), Tool::still("310,10,30,30", folder / "still.png")));
    EXPECT_NE(Tool::errorLine(outcome).find("off the desktop"), std::string::npos);
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(Monitors, ScaleComesFromTheResources)
{
    setMonitor(m_server, "*A", "400/106x300/80+0+0", "screen");
    setMonitor(m_server, "B", "400/106x301/80+400+0");
    setResources(m_server, "Xcursor.size:\t24\nXft.dpi:\t144\nXft.hinting:\t1\n");
    expectPart("0,0,267,200", 0, 0, 400, 300);
    expectPart("10,20,30,41", 15, 30, 45, 62);
    expectPart("400,0,267,201", 400, 0, 400, 301);
    expectPart("401,1,1,1", 402, 2, 1, 1);
    EXPECT_EQ(Tool::capture(m_server, "0,0,10,10").pixelsPerMetreX, 4252U); // 108 an inch
}

TEST_F(Monitors, TheProgramsTableGoesFirst)
{
    setResources(m_server, "Xft.dpi:\t144\n");
    const PngImage whole = Tool::reference(m_server);
    // Two screens of different scales, as the program would hand them over.
    const std::string table = "0 0 200 150 0 0 400 300 2 A\n400 0 400 600 400 0 400 600 1 B\n";
    const PngImage left = captureWith(m_server, table, "10.25,20,5,5");
    Tool::expectSamePixels(left, Tool::cut(whole, 21, 40, 10, 10));
    EXPECT_EQ(left.pixelsPerMetreX, 5669U); // 144 an inch
    EXPECT_EQ(left.pixelsPerMetreY, 5669U);
    const PngImage right = captureWith(m_server, table, "410,20,5,5");
    Tool::expectSamePixels(right, Tool::cut(whole, 410, 20, 5, 5));
    EXPECT_EQ(right.pixelsPerMetreX, 2835U); // 72 an inch
}

TEST_F(Monitors, EveryScaleKeepsNativePixels)
{
    const PngImage whole = Tool::reference(m_server);
    const struct {
        const char* table;
        std::uint32_t perMetre;
    } rows[] = {
        {"0 0 800 600 0 0 800 600 1 A", 2835},    {"0 0 640 480 0 0 800 600 1.25 A", 3543},
        {"0 0 533 400 0 0 800 600 1.5 A", 4252},  {"0 0 400 300 0 0 800 600 2 A", 5669},
        {"0 0 457 343 0 0 800 600 1.75 A", 4961},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.table);
        const PngImage image = captureWith(m_server, row.table, "0,0,1000,1000");
        Tool::expectSamePixels(image, whole);
        EXPECT_EQ(image.pixelsPerMetreX, row.perMetre);
    }
    Tool::expectSamePixels(captureWith(m_server, "0 0 533 400 0 0 800 600 1.5 A", "0,0,533,400"),
                           whole);
}

TEST_F(Monitors, ATableLargerThanTheDesktopIsCutToIt)
{
    // The frame's corner lies 100 pixels left of the root window's.
    Tool::expectSamePixels(
        captureWith(m_server, "0 0 5000 5000 -100 0 5000 5000 1 A", "50,0,1000,5000"),
        Tool::reference(m_server));
}

/// What a Qt program sees, in the form of QtScreens.cpp.
std::string qtScreens(const XServer& server)
{
    const TemporaryFolder runtime; // Qt wants one of its own
    Command command{{TAMRIK_QT_SCREENS},
                    {{"DISPLAY", server.display()},
                     {"QT_QPA_PLATFORM", "xcb"},
                     {"XDG_RUNTIME_DIR", runtime.path().string()}}};
    for (const char* const variable :
         {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_AUTO_SCREEN_SCALE_FACTOR",
          "QT_ENABLE_HIGHDPI_SCALING", "QT_FONT_DPI", "QT_USE_PHYSICAL_DPI",
          "QT_SCALE_FACTOR_ROUNDING_POLICY", "XAUTHORITY"})
        command.environment[variable] = std::nullopt;
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    return outcome.output;
}

/// What the capture tool sees, in the same form.
std::string toolScreens(const XServer& server)
{
    setenv("DISPLAY", server.display().c_str(), 1);
    unsetenv("XAUTHORITY");
    const auto connection = X11::Connection::open();
    if (!connection)
        return connection.failure().message;
    const auto screens = X11::screens(*connection);
    if (!screens)
        return screens.failure().message;
    std::string text;
    for (const ScreenTable::Screen& screen : *screens) {
        char line[200];
        std::snprintf(line, sizeof line, "%g,%g %gx%g scale %.6f %s\n", screen.frame.x,
                      screen.frame.y, screen.frame.width, screen.frame.height, screen.scale,
                      screen.name.c_str());
        text += line;
    }
    return text;
}

TEST(ScreensAsQtHasThem, OneScreen)
{
    for (const char* const dpi : {"72", "96", "120", "192"}) {
        const XServer server("1366x768x24", {"-dpi", dpi});
        const std::string tool = toolScreens(server);
        EXPECT_EQ(tool, qtScreens(server)) << dpi;
        EXPECT_TRUE(tool.starts_with("0,0 1366x768 scale 1.0")) << tool;
    }
}

TEST(ScreensAsQtHasThem, EveryValueOfTheResource)
{
    const XServer server("1366x768x24");
    for (const char* const value :
         {"96",  "97",  "95", "48",   "120", "144",  "144.5",   "144.49", "168", "192", "288",  "0",
          "-96", "abc", "",   "144x", "1e2", "+120", "  120  ", "0x60",   "nan", "inf", "144,5"})
    {
        setResources(server, std::string("a.b:\t1\nXft.dpi:\t") + value + "\nz:\t2\n");
        EXPECT_EQ(toolScreens(server), qtScreens(server)) << '"' << value << '"';
    }
}

TEST(ScreensAsQtHasThem, SeveralMonitors)
{
    const XServer server("3300x1300x24");
    setMonitor(server, "FIRST", "1920/508x1080/286+1280+10", "screen");
    setMonitor(server, "SECOND", "1280/338x1024/270+0+57");
    EXPECT_EQ(toolScreens(server), qtScreens(server));
    setMonitor(server, "*THIRD", "100/30x67/20+3200+1000");
    EXPECT_EQ(toolScreens(server), qtScreens(server));
    setResources(server, "Xft.dpi:\t144\n");
    const std::string tool = toolScreens(server);
    EXPECT_EQ(tool, qtScreens(server));
    EXPECT_TRUE(tool.starts_with("0,0 67x45 scale 1.500000 THIRD\n")) << tool;
}

TEST(ScreensAsQtHasThem, WithoutRandrThereIsOneScreen)
{
    const XServer server("1366x768x24", {"-extension", "RANDR", "-dpi", "144"});
    EXPECT_EQ(toolScreens(server), "0,0 1366x768 scale 1.000000 root\n");
    // Qt calls it by the display's name, so only the rest compares.
    EXPECT_TRUE(qtScreens(server).starts_with("0,0 1366x768 scale 1.000000 "));
}

} // namespace
