#include "screencapture/Tool.h"
#include "support/RootPainter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

mode_t modeOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode;
}

class File : public testing::Test {
protected:
    File() { RootPainter(m_server.display()).paintNoise(21); }

    Outcome take(const std::string& path)
    {
        return run(Tool::command(m_server.display(), Tool::still("0,0,400,300", path)));
    }

    void expectWhole(const std::string& path)
    {
        if (m_whole.rgb.empty())
            m_whole = Tool::reference(m_server);
        Tool::expectSamePixels(readPng(contentOf(path)), m_whole);
    }

    XServer m_server{"400x300x24"};
    TemporaryFolder m_folder;
    PngImage m_whole;
};

TEST_F(File, IsReadableByItsOwnerOnlyWhateverTheUmask)
{
    for (const mode_t mask : {0U, 022U, 077U, 0777U}) {
        const mode_t before = umask(mask);
        const std::string path = m_folder / ("still" + std::to_string(mask));
        const Outcome outcome = take(path);
        umask(before);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        EXPECT_EQ(modeOf(path), S_IFREG | 0600U);
        expectWhole(path);
    }
}

TEST_F(File, ReplacesAnExistingOneWithoutTouchingIt)
{
    const std::string path = m_folder / "still.png";
    writeFile(path, "old");
    fs::permissions(path, fs::perms::all);
    fs::create_hard_link(path, m_folder / "second name");
    EXPECT_EQ(take(path).status, 0);
    expectWhole(path);
    EXPECT_EQ(modeOf(path), S_IFREG | 0600U);
    EXPECT_EQ(contentOf(m_folder / "second name"), "old");
    EXPECT_EQ(m_folder.names(), (std::vector<std::string>{"second name", "still.png"}));
}

TEST_F(File, ReplacesALinkAndNotItsVictim)
{
    const TemporaryFolder elsewhere;
    writeFile(elsewhere / "victim", "precious");
    const std::string path = m_folder / "still.png";
    for (const std::string& target :
         {elsewhere / "victim", elsewhere / "not there", elsewhere.path().string()})
    {
        SCOPED_TRACE(target);
        fs::create_symlink(target, path);
        EXPECT_EQ(take(path).status, 0);
        EXPECT_EQ(modeOf(path), S_IFREG | 0600U);
        expectWhole(path);
        fs::remove(path);
    }
    EXPECT_EQ(contentOf(elsewhere / "victim"), "precious");
    EXPECT_EQ(elsewhere.names(), std::vector<std::string>{"victim"});
}

TEST_F(File, FoldersMayBeReachedThroughLinks)
{
    fs::create_directory(m_folder / "real");
    fs::create_directory_symlink(m_folder / "real", m_folder / "link");
    EXPECT_EQ(take(m_folder / "link/still.png").status, 0);
    expectWhole(m_folder / "real/still.png");
}

TEST_F(File, NamesMayBeRelativeAndStrange)
{
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.path());
    EXPECT_EQ(take("still.png").status, 0);
    EXPECT_EQ(take("./a b\n\xc3\xa9%s").status, 0);
    fs::current_path(before);
    expectWhole(m_folder / "still.png");
    expectWhole(m_folder / "a b\n\xc3\xa9%s");
}

TEST_F(File, OnlyRegularFilesAreReplaced)
{
    fs::create_directory(m_folder / "folder");
    ASSERT_EQ(mkfifo((m_folder / "fifo").c_str(), 0600), 0);
    const std::vector<std::string> before = m_folder.names();
    for (const std::string& path :
         {m_folder / "folder", m_folder / "folder/", m_folder / "folder/.", m_folder / "folder/..",
          m_folder / "fifo", std::string("/dev/null"), std::string("/dev/full"), std::string("/"),
          std::string("."), std::string("..")})
    {
        SCOPED_TRACE(path);
        EXPECT_NE(Tool::errorLine(take(path)).find("cannot write"), std::string::npos);
    }
    EXPECT_EQ(m_folder.names(), before);
    EXPECT_TRUE(fs::is_empty(m_folder / "folder"));
    EXPECT_TRUE(S_ISFIFO(modeOf(m_folder / "fifo")));
    EXPECT_TRUE(S_ISCHR(modeOf("/dev/null")));
}

TEST_F(File, PlacesThatCannotBeWrittenAreAnError)
{
    writeFile(m_folder / "file", "");
    for (const std::string& path :
         {m_folder / "missing/still.png", m_folder / "file/still.png",
          m_folder / std::string(300, 'n'), m_folder / (std::string(5000, 'n') + "/still.png"),
          std::string("/proc/still.png")})
    {
        SCOPED_TRACE(path);
        EXPECT_NE(Tool::errorLine(take(path)).find("cannot write"), std::string::npos);
    }
    EXPECT_EQ(m_folder.names(), std::vector<std::string>{"file"});
}

TEST_F(File, AFolderOfOthersIsAnError)
{
    fs::create_directory(m_folder / "theirs");
    fs::permissions(m_folder / "theirs", static_cast<fs::perms>(0555));
    Command command =
        Tool::command(m_server.display(), Tool::still("0,0,9,9", m_folder / "theirs/still.png"));
    if (geteuid() == 0) // whom no permissions stop
        command.words.insert(command.words.begin(),
                             {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
    EXPECT_NE(Tool::errorLine(run(command)).find("Permission denied"), std::string::npos);
    EXPECT_TRUE(fs::is_empty(m_folder / "theirs"));
}

TEST_F(File, AFullDiskIsAnErrorAndLeavesNothing)
{
    // A disk of 64 KiB in a namespace of its own; the picture is noise and larger than that.
    const std::string script = "mount -t tmpfs -o size=64k tmpfs \"$1\" || exit 90\n"
                               "echo mounted\n"
                               "\"$2\" -R 0,0,400,300 \"$1/still.png\"\n"
                               "echo status $?\n"
                               "ls -A \"$1\"\n";
    fs::create_directory(m_folder / "disk");
    Command command = Tool::command(m_server.display(), {});
    command.words = {"unshare", "--mount"};
    if (geteuid() != 0)
        command.words.push_back("--map-root-user");
    for (const std::string& word : {std::string("sh"), std::string("-c"), script, std::string("sh"),
                                    m_folder / "disk", Tool::path()})
        command.words.push_back(word);
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "mounted\nstatus 1\n") << outcome.error;
    EXPECT_EQ(outcome.error, "screencapture: cannot write \"" + (m_folder / "disk/still.png") +
                                 "\": No space left on device\n");
}

TEST_F(File, AFileThatMayNotGrowIsAnErrorAndLeavesNothing)
{
    Command command =
        Tool::command(m_server.display(), Tool::still("0,0,400,300", m_folder / "still.png"));
    command.words.insert(command.words.begin(), {"prlimit", "--fsize=10000"});
    EXPECT_NE(Tool::errorLine(run(command)).find("File too large"), std::string::npos);
    EXPECT_TRUE(m_folder.names().empty());
}

TEST_F(File, TwoRunsAtOnceToOneNameBothSucceed)
{
    const std::string path = m_folder / "still.png";
    const Command command = Tool::command(m_server.display(), Tool::still("0,0,400,300", path));
    for (int round = 0; round < 20; ++round) {
        ChildProcess first(command);
        ChildProcess second(command);
        EXPECT_EQ(first.wait().status, 0);
        EXPECT_EQ(second.wait().status, 0);
        EXPECT_EQ(m_folder.names(), std::vector<std::string>{"still.png"});
    }
    expectWhole(path);
}

TEST_F(File, ReadersSeeTheOldOneOrTheNewOneWhole)
{
    const std::string path = m_folder / "still.png";
    ASSERT_EQ(take(path).status, 0);
    const std::string content = contentOf(path);
    std::atomic<bool> isDone = false;
    std::atomic<int> reads = 0;
    std::atomic<int> broken = 0;
    std::thread reader([&] {
        while (!isDone) {
            ++reads;
            broken += contentOf(path) != content;
        }
    });
    // A busy machine may let the reader wait for long.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (int round = 0; round < 20 || (reads <= 20 && std::chrono::steady_clock::now() < deadline);
         ++round)
        EXPECT_EQ(take(path).status, 0);
    isDone = true;
    reader.join();
    EXPECT_EQ(broken, 0);
    EXPECT_GT(reads, 20);
}

} // namespace
