#include "Editor/Sidecar.h"

#include "support/PeakMemory.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <limits>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class SidecarFile : public testing::Test {
protected:
    QString image(const char* name = "a.png") const
    {
        return QString::fromStdString(m_folder / name);
    }
    std::string file() const { return m_folder / "a.png.tamrik.json"; }

    static Annotation arrow()
    {
        return {.end = {3, 4}, .colorHex = QStringLiteral("#FF3B30"), .lineWidth = 4};
    }

    TemporaryFolder m_folder;
};

constexpr long mebibyte = 1L << 20;

} // namespace

TEST_F(SidecarFile, IsNamedByThePicturesWholeName)
{
    EXPECT_EQ(Sidecar::path(QStringLiteral("/x/2026-01-02 at 10.11.12.png")),
              QStringLiteral("/x/2026-01-02 at 10.11.12.png.tamrik.json"));
    Sidecar::save({arrow()}, image("a.png"));
    Sidecar::save({arrow(), arrow()}, image("a.jpg"));
    EXPECT_EQ(m_folder.names(),
              (std::vector<std::string>{"a.jpg.tamrik.json", "a.png.tamrik.json"}));
    EXPECT_EQ(Sidecar::load(image("a.png")).size(), 1);
    EXPECT_EQ(Sidecar::load(image("a.jpg")).size(), 2);
}

TEST_F(SidecarFile, APictureWithoutOneHasNoAnnotations)
{
    EXPECT_TRUE(Sidecar::load(image()).isEmpty());
    Sidecar::save({}, image());
    EXPECT_TRUE(m_folder.names().empty());
}

TEST_F(SidecarFile, KeepsTheListUntilItIsEmpty)
{
    QList<Annotation> annotations{arrow(), arrow()};
    Sidecar::save(annotations, image());
    EXPECT_EQ(Sidecar::load(image()), annotations);
    annotations.removeFirst();
    Sidecar::save(annotations, image());
    EXPECT_EQ(Sidecar::load(image()), annotations);
    Sidecar::save({}, image());
    EXPECT_TRUE(m_folder.names().empty());
}

TEST_F(SidecarFile, IsReadableByItsOwnerAlone)
{
    Sidecar::save({arrow()}, image());
    struct stat status = {};
    ASSERT_EQ(stat(file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(SidecarFile, OneThatCannotBeDecodedStaysUntilTheNextSave)
{
    const std::string broken = R"({"version":1,"annotations":[{"kind":"star"}]})";
    writeFile(file(), broken);
    EXPECT_TRUE(Sidecar::load(image()).isEmpty());
    EXPECT_EQ(contentOf(file()), broken);
    Sidecar::save({arrow()}, image());
    EXPECT_EQ(Sidecar::load(image()).size(), 1);
}

TEST_F(SidecarFile, StaysAsItWasWhenTheListCannotBeEncoded)
{
    Sidecar::save({arrow()}, image());
    const std::string before = contentOf(file());
    Annotation endless = arrow();
    endless.end.x = std::numeric_limits<double>::infinity();
    Sidecar::save({endless}, image());
    EXPECT_EQ(contentOf(file()), before);
    EXPECT_EQ(m_folder.names().size(), 1U);
}

// Limits and rights concern a whole process, and root has all rights: so a process of its own
// saves.
namespace {

template <class Prepare>
void saveElsewhere(const QList<Annotation>& annotations, const QString& image, Prepare prepare)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        prepare();
        Sidecar::save(annotations, image);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "status " << status;
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

constexpr uid_t nobody = 65534;

} // namespace

TEST_F(SidecarFile, StaysAsItWasInAFolderThatMayNotBeWritten)
{
    Sidecar::save({arrow()}, image());
    const std::string before = contentOf(file());
    ASSERT_EQ(chmod(file().c_str(), 0666), 0);
    ASSERT_EQ(chmod(m_folder.path().c_str(), 0555), 0);
    const auto unprivileged = [] {
        if (geteuid() == 0 && setuid(nobody) != 0)
            _exit(1);
    };
    saveElsewhere({arrow(), arrow()}, image(), unprivileged);
    saveElsewhere({}, image(), unprivileged);
    EXPECT_EQ(contentOf(file()), before);
    EXPECT_EQ(m_folder.names().size(), 1U);
}

TEST_F(SidecarFile, StaysAsItWasWhenTheDiskIsFull)
{
    Sidecar::save({arrow()}, image());
    const std::string before = contentOf(file());
    Annotation stroke = arrow();
    stroke.path.emplace(100'000, Geometry::Point{1.5, 2.5});
    saveElsewhere({stroke}, image(), [] {
        // A file that may not grow is what a full disk looks like: a part is written, then no more.
        const rlimit limit{65536, 65536};
        signal(SIGXFSZ, SIG_IGN);
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            _exit(1);
    });
    EXPECT_TRUE(contentOf(file()) == before); // too long to be printed
    EXPECT_EQ(m_folder.names().size(), 1U) << "something was left behind";
}

TEST_F(SidecarFile, WhatIsNoFileIsNeitherReadNorReplaced)
{
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    EXPECT_TRUE(Sidecar::load(image()).isEmpty()); // does not wait
    Sidecar::save({arrow()}, image());
    struct stat status = {};
    ASSERT_EQ(stat(file().c_str(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
    ASSERT_EQ(unlink(file().c_str()), 0);

    ASSERT_EQ(mkdir(file().c_str(), 0700), 0);
    writeFile(file() + "/kept", "");
    EXPECT_TRUE(Sidecar::load(image()).isEmpty());
    Sidecar::save({arrow()}, image());
    Sidecar::save({}, image());
    EXPECT_EQ(contentOf(file() + "/kept"), "");
    EXPECT_EQ(m_folder.names().size(), 1U);
}

TEST_F(SidecarFile, NobodyTakesMemoryForALargeOne)
{
    { // 100 MB of brackets
        std::ofstream large(file(), std::ios::binary);
        large << R"({"version":1,"annotations":[)" << std::string(100'000'000, '[');
    }
    const PeakMemory memory;
    EXPECT_TRUE(Sidecar::load(image()).isEmpty());
    ASSERT_EQ(truncate(file().c_str(), off_t{1} << 40), 0); // a hole of a terabyte
    EXPECT_TRUE(Sidecar::load(image()).isEmpty());
    EXPECT_LT(memory.growth(), 16 * mebibyte);
}

TEST_F(SidecarFile, ALongOneIsReadToItsEnd)
{
    const Result<QByteArray> json = Sidecar::encode({1, {arrow(), arrow()}});
    ASSERT_TRUE(json);
    const qsizetype between = json->indexOf("},{") + 2;
    std::string content = json->toStdString();
    for (const std::size_t length : {65U << 20, 9U << 20}) { // a million points make 44 MB
        writeFile(file(), content.substr(0, static_cast<std::size_t>(between)) +
                              std::string(length, ' ') +
                              content.substr(static_cast<std::size_t>(between)));
        EXPECT_EQ(Sidecar::load(image()).size(), 2);
    }
    ASSERT_EQ(truncate(file().c_str(), 9 << 20), 0); // its end is missing
    EXPECT_TRUE(Sidecar::load(image()).isEmpty());
}

TEST_F(SidecarFile, DeepOnesDoNotExhaustTheStack)
{
    const std::string deep(10'000'000, '[');
    writeFile(file(), R"({"version":1,"annotations":[)" + deep);
    EXPECT_TRUE(Sidecar::load(image()).isEmpty());
    writeFile(file(), R"({"version":1,"x":)" + deep + std::string(deep.size(), ']') +
                          R"(,"annotations":[]})");
    EXPECT_TRUE(Sidecar::load(image()).isEmpty());
}

TEST_F(SidecarFile, RubbishIsNoAnnotations)
{
    for (const std::string& content :
         {std::string(), std::string(1000, '\0'), std::string("\xFF\xFE{\0}\0", 6),
          std::string("{\"version\":1,\"annotations\":[]}\0", 31),
          std::string("\x89PNG\r\n\x1A\n")})
    {
        writeFile(file(), content);
        EXPECT_TRUE(Sidecar::load(image()).isEmpty());
    }
}
