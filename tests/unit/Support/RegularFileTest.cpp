#include "Support/RegularFile.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

TEST(RegularFile, IsOpenedWithItsSize)
{
    const TemporaryFolder folder;
    writeFile(folder / "file", "12345");
    const auto file = RegularFile::open(folder / "file");
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->descriptor);
    EXPECT_EQ(file->size, 5);
}

TEST(RegularFile, MayBeReachedThroughALink)
{
    const TemporaryFolder folder;
    writeFile(folder / "file", "12345");
    std::filesystem::create_symlink(folder / "file", folder / "link");
    EXPECT_TRUE(RegularFile::open(folder / "link"));
}

TEST(RegularFile, IsNothingElse)
{
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {folder.path().string(), pipe, std::string("/dev/null")}) {
        const auto file = RegularFile::open(path);
        ASSERT_FALSE(file) << path;
        EXPECT_EQ(file.failure().message, "cannot open " + path + ": it is not a regular file");
    }
    EXPECT_EQ(RegularFile::open(folder / "missing").failure().message,
              "cannot open " + (folder / "missing") + ": No such file or directory");
}
