#include "Support/OutputFile.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include <sys/stat.h>

namespace {

using testing::ElementsAre;
using testing::StartsWith;

class Output : public testing::TestWithParam<OutputFile::Kind> {
protected:
    std::unique_ptr<OutputFile> created() const
    {
        auto file = OutputFile::create(m_target, GetParam());
        EXPECT_TRUE(file);
        return file ? std::move(*file) : nullptr;
    }

    static void fill(OutputFile& file)
    {
        const std::array<std::uint8_t, 3> bytes = {'n', 'e', 'w'};
        EXPECT_FALSE(file.write(bytes, 0));
    }

    TemporaryFolder m_folder;
    std::string m_target = m_folder / "film.mp4";
};

} // namespace

TEST_P(Output, HasItsNameWhenItIsPublished)
{
    const auto file = created();
    fill(*file);
    if (GetParam() == OutputFile::Kind::Hidden)
        EXPECT_THAT(m_folder.names(), ElementsAre(StartsWith(".tamrik-")));
    else
        EXPECT_THAT(m_folder.names(), ElementsAre());
    EXPECT_FALSE(file->publish());
    EXPECT_THAT(m_folder.names(), ElementsAre("film.mp4"));
    EXPECT_EQ(contentOf(m_target), "new");
    struct stat status = {};
    ASSERT_EQ(stat(m_target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_P(Output, GoesWhenItIsNotPublished)
{
    writeFile(m_target, "old");
    fill(*created());
    EXPECT_THAT(m_folder.names(), ElementsAre());
}

TEST_P(Output, ReplacesWhatCameMeanwhile)
{
    const auto file = created();
    fill(*file);
    writeFile(m_target, "quicker");
    EXPECT_FALSE(file->publish());
    EXPECT_THAT(m_folder.names(), ElementsAre("film.mp4"));
    EXPECT_EQ(contentOf(m_target), "new");
}

INSTANTIATE_TEST_SUITE_P(, Output,
                         testing::Values(OutputFile::Kind::Nameless, OutputFile::Kind::Hidden));
