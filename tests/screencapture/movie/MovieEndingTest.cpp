#include "screencapture/Tool.h"
#include "screencapture/movie/Film.h"
#include "support/RootPainter.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Film::Recorder;
using Film::Seconds;
using std::chrono::steady_clock;

class MovieEnding : public testing::Test {
protected:
    MovieEnding() { RootPainter(m_server.display()).paintNoise(41); }

    /// That an ending with an error left a movie, and says why in one line.
    std::string expectErrorAndMovie(const Outcome& outcome)
    {
        EXPECT_EQ(outcome.status, 1);
        EXPECT_GT(Film::read(m_file).duration, 0);
        return Tool::errorLine(outcome);
    }

    XServer m_server{"400x300x24"};
    TemporaryFolder m_folder;
    std::string m_file = m_folder / "film.mov";
};

TEST_F(MovieEnding, ASignalAtAnyMomentLeavesAMovieOrNothing)
{
    int early = 0;
    int filmed = 0;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        for (auto delay = 0us; delay <= 150ms; delay += signal == SIGINT ? 5ms : 30ms) {
            SCOPED_TRACE(std::to_string(signal) + " after " + std::to_string(delay.count()));
            Recorder recorder(m_server, "0,0,400,300", m_file);
            std::this_thread::sleep_for(delay);
            recorder.send(signal);
            const Outcome outcome = recorder.wait();
            EXPECT_EQ(outcome.error, "");
            if (outcome.signal != 0) {
                ++early;
                EXPECT_EQ(outcome.signal, signal);
                EXPECT_TRUE(m_folder.names().empty());
                continue;
            }
            ++filmed;
            EXPECT_EQ(outcome.status, 0);
            EXPECT_EQ(m_folder.names(), std::vector<std::string>{"film.mov"});
            EXPECT_GT(Film::read(m_file).duration, 0);
            fs::remove(m_file);
        }
    }
    EXPECT_GT(early, 0);
    EXPECT_GT(filmed, 0);
}

TEST_F(MovieEnding, AParentThatIgnoresSignalsDoesNotMakeItDeaf)
{
    for (const auto& [name, signal] : {std::pair{"INT", SIGINT}, {"TERM", SIGTERM}}) {
        Command command = Film::command(m_server, "0,0,400,300", m_file);
        command.words.insert(command.words.begin(),
                             {"sh", "-c", std::string("trap '' ") + name + "; exec \"$@\"", "sh"});
        ChildProcess tool(command);
        while (!fs::exists(m_file))
            std::this_thread::sleep_for(2ms);
        tool.send(signal);
        EXPECT_EQ(tool.wait().status, 0);
        EXPECT_GT(Film::read(m_file).duration, 0);
        fs::remove(m_file);
    }
}

bool hasEnded(pid_t id)
{
    std::ifstream file("/proc/" + std::to_string(id) + "/stat");
    std::string number;
    std::string name;
    char state = 0;
    file >> number >> name >> state;
    return state == 'Z';
}

TEST_F(MovieEnding, ASignalInTheMiddleOfBecomingTheMovieProgramIsNotLost)
{
    for (int round = 0; round < 10; ++round) {
        Command command = Film::command(m_server, "0,0,400,300", m_file);
        command.words.insert(command.words.begin(), {"sh", "-c", "trap '' INT; exec \"$@\"", "sh"});
        ChildProcess tool(command);
        const std::string program = "/proc/" + std::to_string(tool.id()) + "/exe";
        std::error_code error;
        while (fs::read_symlink(program, error).filename() != "screencapture-movie")
            std::this_thread::yield();
        tool.send(SIGINT);
        const auto deadline = steady_clock::now() + 20s;
        while (!hasEnded(tool.id()) && steady_clock::now() < deadline)
            std::this_thread::sleep_for(1ms);
        ASSERT_TRUE(hasEnded(tool.id())) << "films on";
        EXPECT_EQ(tool.wait().signal, SIGINT);
        EXPECT_TRUE(m_folder.names().empty());
    }
}

TEST_F(MovieEnding, BeingKilledLosesASecondAtMost)
{
    Recorder recorder(m_server, "0,0,400,300", m_file);
    recorder.awaitFile();
    const auto there = steady_clock::now();
    std::this_thread::sleep_for(1700ms);
    recorder.send(SIGKILL);
    const double filmed = Seconds(steady_clock::now() - there).count();
    EXPECT_EQ(recorder.wait().signal, SIGKILL);
    EXPECT_GT(Film::read(m_file).duration, filmed - 1);
    EXPECT_EQ(m_folder.names(), std::vector<std::string>{"film.mov"});
}

TEST_F(MovieEnding, BeingKilledAtAnyEarlyMomentLeavesAMovieOrNothing)
{
    int published = 0;
    for (auto delay = 0us; published < 3; delay += 7ms) {
        ASSERT_LT(delay, 20s);
        Recorder recorder(m_server, "0,0,400,300", m_file);
        std::this_thread::sleep_for(delay);
        recorder.send(SIGKILL);
        recorder.wait();
        if (m_folder.names().empty())
            continue;
        ++published;
        ASSERT_EQ(m_folder.names(), std::vector<std::string>{"film.mov"});
        EXPECT_GT(Film::read(m_file).duration, 0);
        fs::remove(m_file);
    }
}

TEST_F(MovieEnding, ItsParentsEndIsItsOwn)
{
    // Orphans become this process's children, so that it can wait for them.
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    Command command = Film::command(m_server, "0,0,400,300", m_file);
    command.words.insert(command.words.begin(),
                         {"sh", "-c", "\"$@\" & echo $! >\"$0\"; wait", m_folder / "id"});
    ChildProcess shell(command);
    while (!fs::exists(m_file))
        std::this_thread::sleep_for(2ms);
    pid_t id = 0;
    std::ifstream(m_folder / "id") >> id;
    ASSERT_GT(id, 0);
    shell.send(SIGKILL);
    shell.wait();
    int status = -1;
    ASSERT_EQ(waitpid(id, &status, 0), id);
    prctl(PR_SET_CHILD_SUBREAPER, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_GT(Film::read(m_file).duration, 0);
}

TEST_F(MovieEnding, AParentThatWasGoneBeforeItBeganIsNoticed)
{
    ChildProcess program({{"true"}, {}});
    const pid_t parent = program.id();
    program.wait();
    Recorder recorder(m_server, "0,0,400,300", m_file, {"-C"},
                      {{"TAMRIK_PARENT", std::to_string(parent)}});
    const Outcome outcome = recorder.wait();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_GT(Film::read(m_file).duration, 0);
}

TEST_F(MovieEnding, TheXServersEndKeepsWhatWasFilmed)
{
    Recorder recorder(m_server, "0,0,400,300", m_file);
    recorder.awaitFile();
    m_server.kill();
    EXPECT_NE(expectErrorAndMovie(recorder.wait()).find("lost the connection"), std::string::npos);
}

TEST_F(MovieEnding, ARemovedFileEndsItWithAnError)
{
    Recorder recorder(m_server, "0,0,400,300", m_file);
    recorder.awaitFile();
    fs::remove(m_file);
    EXPECT_NE(Tool::errorLine(recorder.wait()).find("was removed"), std::string::npos);
    EXPECT_TRUE(m_folder.names().empty());
}

TEST_F(MovieEnding, ARemovedFolderEndsItWithAnError)
{
    fs::create_directory(m_folder / "folder");
    Recorder recorder(m_server, "0,0,400,300", m_folder / "folder/film.mov");
    recorder.awaitFile();
    fs::remove_all(m_folder / "folder");
    EXPECT_NE(Tool::errorLine(recorder.wait()).find("was removed"), std::string::npos);
}

/// Films onto a disk of some KiB of its own until that is full, and copies what is there.
Outcome filmOntoSmallDisk(const XServer& server, const TemporaryFolder& folder, int kib)
{
    const std::string script = "mount -t tmpfs -o size=" + std::to_string(kib) +
                               "k tmpfs \"$1\" || exit 90\n"
                               "\"$2\" -v -R 0,0,400,300 \"$1/film.mov\"\n"
                               "echo status $?\n"
                               "ls -A \"$1\"\n"
                               "cp \"$1/film.mov\" \"$3\" 2>/dev/null || :\n";
    fs::create_directory(folder / "disk");
    Command command = Tool::command(server.display(), {});
    command.words = {"unshare", "--mount"};
    if (geteuid() != 0)
        command.words.push_back("--map-root-user");
    for (const std::string& word : {std::string("sh"), std::string("-c"), script, std::string("sh"),
                                    folder / "disk", Tool::path(), folder / "film.mov"})
        command.words.push_back(word);
    Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    return outcome;
}

TEST_F(MovieEnding, AFullDiskKeepsWhatWasFilmed)
{
    // Noise: a key frame of it has more than 100 KiB, and there is one a second.
    const Outcome outcome = filmOntoSmallDisk(m_server, m_folder, 300);
    EXPECT_EQ(outcome.output, "status 1\nfilm.mov\n");
    EXPECT_EQ(outcome.error, "screencapture: cannot write \"" + (m_folder / "disk/film.mov") +
                                 "\": No space left on device\n");
    EXPECT_GT(Film::read(m_file).duration, 0);
}

TEST_F(MovieEnding, ADiskThatIsFullFromTheStartGetsNoFile)
{
    const Outcome outcome = filmOntoSmallDisk(m_server, m_folder, 16);
    EXPECT_EQ(outcome.output, "status 1\n");
    EXPECT_NE(outcome.error.find("No space left on device"), std::string::npos);
}

ino_t numberOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0);
    return status.st_ino;
}

TEST_F(MovieEnding, WhatStandsInItsPlaceIsReplacedAndNeverFollowed)
{
    writeFile(m_folder / "victim", "precious");
    fs::create_symlink(m_folder / "victim", m_file);
    for (int i = 0; i < 2; ++i) { // the second time it is a file
        const ino_t before = numberOf(m_file);
        Recorder recorder(m_server, "0,0,400,300", m_file);
        while (numberOf(m_file) == before)
            std::this_thread::sleep_for(2ms);
        recorder.stop();
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(m_file)));
        EXPECT_GT(Film::read(m_file).duration, 0);
    }
    EXPECT_EQ(contentOf(m_folder / "victim"), "precious");
    EXPECT_EQ(m_folder.names(), (std::vector<std::string>{"film.mov", "victim"}));
}

TEST_F(MovieEnding, WhatCannotBeginIsOneLineAndNoFile)
{
    const struct {
        const char* rectangle;
        std::string file;
        const char* named;
    } rows[] = {{"400,0,10,10", m_file, "off the desktop"},
                {"0,0,10,10", m_folder / "missing/film.mov", "cannot write"},
                {"0,0,10,10", m_folder.path().string(), "cannot write"},
                {"0,0,10", m_file, "0,0,10"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.named);
        const Outcome outcome = run(Film::command(m_server, row.rectangle, row.file));
        EXPECT_NE(Tool::errorLine(outcome).find(row.named), std::string::npos);
    }
    Command noDisplay = Film::command(m_server, "0,0,10,10", m_file);
    noDisplay.environment["DISPLAY"] = ":99999";
    EXPECT_NE(Tool::errorLine(run(noDisplay)).find("cannot open display"), std::string::npos);
    EXPECT_TRUE(m_folder.names().empty());
}

} // namespace
