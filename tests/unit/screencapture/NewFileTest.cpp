#include "NewFile.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string_view>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

std::span<const std::uint8_t> bytesOf(std::string_view text)
{
    const void* const start = text.data();
    return {static_cast<const std::uint8_t*>(start), text.size()};
}

/// Both ways of making a file have to behave alike; here nobody asks the file system which it can.
class NewFileOf : public testing::TestWithParam<OutputFile::Kind> {
protected:
    Result<std::unique_ptr<OutputFile>> create(const std::string& path)
    {
        return newFile(path, GetParam());
    }

    std::size_t hiddenFiles() const { return GetParam() == OutputFile::Kind::Hidden ? 1 : 0; }

    TemporaryFolder m_folder;
};

TEST_P(NewFileOf, AppearsWhenItIsPublished)
{
    const std::string path = m_folder / "new";
    auto file = create(path);
    ASSERT_TRUE(file) << file.failure().message;
    EXPECT_FALSE((*file)->append(bytesOf("one ")));
    EXPECT_FALSE((*file)->append(bytesOf("two")));
    EXPECT_EQ(m_folder.names().size(), hiddenFiles());
    EXPECT_FALSE(fs::exists(path));
    EXPECT_FALSE((*file)->publishUnsynced());
    *file = nullptr;
    EXPECT_EQ(m_folder.names(), std::vector<std::string>{"new"});
    EXPECT_EQ(contentOf(path), "one two");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_P(NewFileOf, GrowsInItsPlace)
{
    const std::string path = m_folder / "new";
    auto file = create(path);
    ASSERT_TRUE(file);
    EXPECT_FALSE((*file)->append(bytesOf("first,")));
    EXPECT_FALSE((*file)->publishUnsynced());
    EXPECT_FALSE((*file)->isRemoved());
    EXPECT_EQ(contentOf(path), "first,");
    EXPECT_FALSE((*file)->append(bytesOf("second,")));
    EXPECT_FALSE((*file)->sync());
    EXPECT_EQ((*file)->size(), 13);
    EXPECT_EQ(contentOf(path), "first,second,");
    (*file)->cutTo(6);
    EXPECT_EQ(contentOf(path), "first,");
    EXPECT_FALSE((*file)->append(bytesOf("third")));
    EXPECT_EQ(contentOf(path), "first,third");
    EXPECT_EQ((*file)->size(), 11);
    fs::remove(path);
    EXPECT_TRUE((*file)->isRemoved());
}

TEST_P(NewFileOf, ReplacesFilesAndLinksThemselves)
{
    writeFile(m_folder / "victim", "precious");
    writeFile(m_folder / "file", "old");
    fs::create_symlink("victim", m_folder / "link");
    for (const char* const name : {"file", "link"}) {
        auto file = create(m_folder / name);
        ASSERT_TRUE(file) << file.failure().message;
        EXPECT_FALSE((*file)->append(bytesOf("new")));
        EXPECT_FALSE((*file)->publishUnsynced());
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(m_folder / name)));
        EXPECT_EQ(contentOf(m_folder / name), "new");
    }
    EXPECT_EQ(contentOf(m_folder / "victim"), "precious");
    EXPECT_EQ(m_folder.names(), (std::vector<std::string>{"file", "link", "victim"}));
}

TEST_P(NewFileOf, LeavesNothingWhenItIsGivenUp)
{
    {
        const auto file = create(m_folder / "new");
        ASSERT_TRUE(file);
        EXPECT_FALSE((*file)->append(bytesOf("content")));
    }
    EXPECT_TRUE(m_folder.names().empty());
}

TEST_P(NewFileOf, LeavesNothingWhenAFolderTookItsPlace)
{
    {
        const auto file = create(m_folder / "new");
        ASSERT_TRUE(file);
        fs::create_directory(m_folder / "new");
        const PossibleFailure failure = (*file)->publishUnsynced();
        ASSERT_TRUE(failure);
        EXPECT_NE(failure->message.find("directory"), std::string::npos) << failure->message;
    }
    EXPECT_EQ(m_folder.names(), std::vector<std::string>{"new"});
}

TEST_P(NewFileOf, ALinkPlantedMeanwhileIsReplaced)
{
    writeFile(m_folder / "victim", "precious");
    const auto file = create(m_folder / "new");
    ASSERT_TRUE(file);
    fs::create_symlink("victim", m_folder / "new");
    EXPECT_FALSE((*file)->append(bytesOf("content")));
    EXPECT_FALSE((*file)->publishUnsynced());
    EXPECT_EQ(contentOf(m_folder / "victim"), "precious");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(m_folder / "new")));
    EXPECT_EQ(contentOf(m_folder / "new"), "content");
}

TEST_P(NewFileOf, LeavesNothingWhenASignalEndsTheProcess)
{
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const auto file = create(m_folder / "new");
            if (!file || (*file)->append(bytesOf("content")) ||
                m_folder.names().size() != hiddenFiles())
                _exit(1);
            raise(signal);
            _exit(2);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
        EXPECT_TRUE(m_folder.names().empty());
    }
}

TEST_P(NewFileOf, IgnoresASignalThatItsCallerIgnores)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        std::signal(SIGHUP, SIG_IGN); // as nohup does
        const auto file = create(m_folder / "new");
        raise(SIGHUP);
        _exit(file && !(*file)->append(bytesOf("content")) && !(*file)->publishUnsynced() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(contentOf(m_folder / "new"), "content");
}

TEST_P(NewFileOf, RefusesWhatIsNotARegularFile)
{
    fs::create_directory(m_folder / "folder");
    ASSERT_EQ(mkfifo((m_folder / "fifo").c_str(), 0600), 0);
    for (const std::string& path : {m_folder / "folder", m_folder / "folder/", m_folder / "fifo",
                                    m_folder / "missing/new", std::string(), std::string("/")})
    {
        const auto file = create(path);
        ASSERT_FALSE(file) << path;
        EXPECT_TRUE(file.failure().message.starts_with("cannot write \"" + path + "\": "));
    }
    EXPECT_EQ(m_folder.names(), (std::vector<std::string>{"fifo", "folder"}));
}

INSTANTIATE_TEST_SUITE_P(Kinds, NewFileOf,
                         testing::Values(OutputFile::Kind::Nameless, OutputFile::Kind::Hidden),
                         [](const auto& test) {
                             return test.param == OutputFile::Kind::Hidden ? "Hidden" : "Nameless";
                         });

} // namespace
