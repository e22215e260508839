#include "screencapture/Tool.h"

#include <gtest/gtest.h>

namespace {

using Words = std::vector<std::string>;

/// Stands for a file in a folder of the test's own.
const std::string file = "FILE";

struct BadLine {
    Words words;
    /// What the error line has to name.
    std::string named;
};

const BadLine badLines[] = {
    {{}, "-R"},
    {{""}, "-R"},
    {{file}, "-R"},
    {{"-x", "-t", "png", file}, "-R"},
    {{"--"}, "-R"},
    {{"-R", "0,0,10,10"}, "file"},
    {{"-x", "-t", "png", "-R", "0,0,10,10"}, "file"},
    {{"-R", "0,0,10,10", "--"}, "file"},
    {{"-R", "0,0,10,10", ""}, "file"},
    {{"-R"}, "-R"},
    {{"-x", "-R"}, "-R"},
    {{"-R", file}, "rectangle"},
    {{"-t"}, "-t"},
    {{"-R", "0,0,10,10", "-t"}, "-t"},
    {{"-t", "", "-R", "0,0,10,10", file}, "format"},
    {{"-t", "jpg", "-R", "0,0,10,10", file}, "jpg"},
    {{"-t", "PNG", "-R", "0,0,10,10", file}, "PNG"},
    {{"-t", "pngx", "-R", "0,0,10,10", file}, "pngx"},
    {{"-tpdf", "-R", "0,0,10,10", file}, "pdf"},
    {{"-C", "-R", "0,0,10,10", file}, "-v"},
    {{"-k", "-R", "0,0,10,10", file}, "-v"},
    {{"-v", "-t", "png", "-R", "0,0,10,10", file}, "-t"},
    {{"-v", "-C", "-k", "-g", file}, "-R"},
    {{"-q", "-R", "0,0,10,10", file}, "-q"},
    {{"-xq", "-R", "0,0,10,10", file}, "-q"},
    {{"-r", "0,0,10,10", file}, "-r"},
    {{"--help"}, "--"},
    {{"-x-", "-R", "0,0,10,10", file}, "--"},
    {{"-R", "0,0,10,10", file, "-x"}, "-x"},
    {{"-R", "0,0,10,10", file, file + "2"}, "extra"},
    {{"-R", "", file}, "rectangle"},
    {{"-R", "0,0,10", file}, "0,0,10"},
    {{"-R", "0,0,10,", file}, "0,0,10,"},
    {{"-R", ",0,10,10", file}, "rectangle"},
    {{"-R", "0,,10,10", file}, "rectangle"},
    {{"-R", "0,0,10,10,10", file}, "rectangle"},
    {{"-R", "0,0,10,10,", file}, "rectangle"},
    {{"-R", "0,0,10,10x", file}, "10x"},
    {{"-R", "0,0,10,10 ", file}, "rectangle"},
    {{"-R", " 0,0,10,10", file}, "rectangle"},
    {{"-R", "0, 0,10,10", file}, "rectangle"},
    {{"-R", "0;0;10;10", file}, "rectangle"},
    {{"-R", "0 0 10 10", file}, "rectangle"},
    {{"-R", "a,b,c,d", file}, "a,b,c,d"},
    {{"-R", "+0,0,10,10", file}, "rectangle"},
    {{"-R", "--1,0,10,10", file}, "rectangle"},
    {{"-R", "0x0,0,10,10", file}, "rectangle"},
    {{"-R", "0,0,0x10,10", file}, "rectangle"},
    {{"-R", "0,0,1p3,10", file}, "rectangle"},
    {{"-R", "nan,0,10,10", file}, "nan"},
    {{"-R", "0,-nan,10,10", file}, "nan"},
    {{"-R", "0,0,inf,10", file}, "inf"},
    {{"-R", "0,0,10,infinity", file}, "infinity"},
    {{"-R", "-inf,0,10,10", file}, "-inf"},
    {{"-R", "0,0,1e999,10", file}, "1e999"},
    {{"-R", "0,0,10e,10", file}, "rectangle"},
    {{"-R", "0,0,0,10", file}, "empty"},
    {{"-R", "0,0,10,-0", file}, "empty"},
    {{"-R", "0,0,-10,10", file}, "empty"},
    {{"-R", "0,0,10,10\n", file}, "rectangle"},
    {{"-R", "0,0,10,10\nscreencapture: all is well", file}, "rectangle"},
    {{"-\n", file}, "unknown"},
};

TEST(CommandLine, EveryMistakeIsOneLineAndNoFile)
{
    const XServer server("64x48x24");
    for (const BadLine& line : badLines) {
        SCOPED_TRACE(testing::PrintToString(line.words));
        const TemporaryFolder folder;
        Words words = line.words;
        for (std::string& word : words) {
            if (word.starts_with(file))
                word = folder / word;
        }
        const std::string error = Tool::errorLine(run(Tool::command(server.display(), words)));
        EXPECT_NE(error.find(line.named), std::string::npos) << error;
        EXPECT_TRUE(folder.names().empty());
    }
}

TEST(CommandLine, MistakesAreFoundWithoutAnXServer)
{
    const Outcome outcome = run(Tool::command(":99999", {"-R", "nonsense", "/tmp/never.png"}));
    EXPECT_NE(Tool::errorLine(outcome).find("nonsense"), std::string::npos);
}

TEST(CommandLine, RectanglesOffTheDesktopAreAnError)
{
    const XServer server("64x48x24");
    for (const char* const rectangle :
         {"64,0,10,10", "0,48,10,10", "-10,0,10,10", "0,-10,10,10", "1e300,1e300,1,1",
          "-5e8,0,10,10", "4294967296,0,10,10", "10.1,10,0.2,10"})
    {
        SCOPED_TRACE(rectangle);
        const TemporaryFolder folder;
        const Outcome outcome =
            run(Tool::command(server.display(), Tool::still(rectangle, folder / "still.png")));
        EXPECT_NE(Tool::errorLine(outcome).find("off the desktop"), std::string::npos);
        EXPECT_TRUE(folder.names().empty());
    }
}

TEST(CommandLine, WithoutADisplayItSaysSo)
{
    const TemporaryFolder folder;
    const Words still = Tool::still("0,0,10,10", folder / "still.png");
    EXPECT_EQ(Tool::errorLine(run(Tool::command(":99999", still))),
              "screencapture: cannot open display \":99999\"\n");
    EXPECT_EQ(Tool::errorLine(run(Tool::command("nonsense", still))),
              "screencapture: cannot open display \"nonsense\"\n");
    EXPECT_NE(Tool::errorLine(run(Tool::command("", still))).find("DISPLAY"), std::string::npos);
    Command unset = Tool::command("", still);
    unset.environment["DISPLAY"] = std::nullopt;
    EXPECT_NE(Tool::errorLine(run(unset)).find("DISPLAY"), std::string::npos);
    EXPECT_TRUE(folder.names().empty());
}

TEST(CommandLine, ABrokenTableOfScreensIsAnError)
{
    const XServer server("64x48x24");
    for (const char* const table : {"", "nonsense", "0 0 64 48 0 0 64 48 0 A\n",
                                    "0 0 64 48 0 0 64 48 nan A\n", "0 0 64 48 0 0 64 48 1 A\n\n"})
    {
        SCOPED_TRACE(table);
        const TemporaryFolder folder;
        Command command =
            Tool::command(server.display(), Tool::still("0,0,10,10", folder / "still.png"));
        command.environment["TAMRIK_SCREENS"] = table;
        EXPECT_NE(Tool::errorLine(run(command)).find("TAMRIK_SCREENS"), std::string::npos);
        EXPECT_TRUE(folder.names().empty());
    }
}

} // namespace
