#include "screencapture/Tool.h"
#include "support/RootPainter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// Runs the tool again and again, ending it by `signal` after longer and longer: until it comes to
/// its end three times in a row.
void endAtEveryMoment(const XServer& server, int signal)
{
    const TemporaryFolder folder;
    const std::string path = folder / "still.png";
    const Command command = Tool::command(server.display(), Tool::still("0,0,800,600", path));
    const std::string whole = [&] {
        EXPECT_EQ(run(command).status, 0);
        return contentOf(path);
    }();
    fs::remove(path);

    int ended = 0;
    int finishedInARow = 0;
    for (auto delay = 0us; finishedInARow < 3; delay += 250us) {
        ASSERT_LT(delay, 20s);
        ChildProcess tool(command);
        std::this_thread::sleep_for(delay);
        tool.send(signal);
        const Outcome outcome = tool.wait();
        if (outcome.signal == signal) {
            ++ended;
            finishedInARow = 0;
        } else {
            EXPECT_EQ(outcome.status, 0) << outcome.error;
            ++finishedInARow;
        }
        // Published and then ended, or not published at all; never anything else.
        const std::vector<std::string> names = folder.names();
        if (outcome.signal == 0 || !names.empty()) {
            ASSERT_EQ(names, std::vector<std::string>{"still.png"});
            ASSERT_EQ(contentOf(path), whole);
            fs::remove(path);
        }
    }
    EXPECT_GT(ended, 5);
}

TEST(Ending, ByAnySignalAtAnyMomentLeavesNothingHalfWritten)
{
    const XServer server("800x600x24");
    RootPainter(server.display()).paintNoise(22);
    for (const int signal : {SIGKILL, SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(signal);
        endAtEveryMoment(server, signal);
    }
}

/// Takes pictures of a server that is killed after longer and longer, until the tool comes to its
/// end three times in a row. Returns how often the server was gone in the middle.
int loseTheServerAtEveryMoment(const std::vector<std::string>& options)
{
    int lost = 0;
    int finishedInARow = 0;
    for (auto delay = 0us; finishedInARow < 3 && delay < 20s; delay += 250us) {
        XServer server("1600x1200x24", options);
        RootPainter(server.display()).paintNoise(23);
        const TemporaryFolder folder;
        const std::string path = folder / "still.png";
        ChildProcess tool(Tool::command(server.display(), Tool::still("0,0,1600,1200", path)));
        std::this_thread::sleep_for(delay);
        server.kill();
        const Outcome outcome = tool.wait();
        if (outcome.status == 0 && outcome.signal == 0) {
            ++finishedInARow;
            EXPECT_EQ(outcome.error, "");
            EXPECT_EQ(readPng(contentOf(path)).width, 1600U);
            continue;
        }
        finishedInARow = 0;
        lost += Tool::errorLine(outcome).find("lost the connection") != std::string::npos;
        EXPECT_TRUE(folder.names().empty());
    }
    EXPECT_EQ(finishedInARow, 3);
    return lost;
}

/// On a busy machine the moment in which the tool reads may fall between two of all those.
bool losesTheServerInTheMiddle(const std::vector<std::string>& options)
{
    constexpr int most = 20;
    for (int i = 0; i < most; ++i) {
        if (loseTheServerAtEveryMoment(options) > 0)
            return true;
    }
    return false;
}

TEST(Ending, OfTheXServerAtAnyMomentIsOneLineAndNoFile)
{
    EXPECT_TRUE(losesTheServerInTheMiddle({}));
    EXPECT_TRUE(losesTheServerInTheMiddle({"-extension", "MIT-SHM"}));
}

} // namespace
