// GIFs whose program ends while they are written, and how often one that is complete plays.

#include "Media/AnimatedGIF.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/Videos.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

class GIFFile : public testing::Test {
protected:
    GIFFile() { fs::create_directory(m_folder / "out"); }

    TemporaryFolder m_folder;
    std::string m_film = m_folder / "film.mp4";
    std::string m_gif = m_folder / "out/made.gif";
};

/// Goes through a GIF file (GIF89a) by itself.
class Blocks {
public:
    explicit Blocks(const std::string& bytes)
        : m_bytes(bytes)
    {
        m_place = 13 + coloursBehind(10);
    }

    /// The numbers of repetitions that are asked for before the first picture and behind it, and
    /// how many pictures there are.
    struct Found {
        std::vector<int> before, behind;
        int pictures = 0;
    };
    Found find()
    {
        Found found;
        for (int kind = next(); kind != 0x3b; kind = next()) {
            if (kind == 0x21)
                takeExtension(found.pictures == 0 ? found.before : found.behind);
            else
                takePicture(found.pictures);
        }
        return found;
    }

private:
    int at(std::size_t place) const { return static_cast<std::uint8_t>(m_bytes.at(place)); }
    int next() { return at(m_place++); }
    /// How many bytes of colours follow a place that says so.
    std::size_t coloursBehind(std::size_t place) const
    {
        const int flags = at(place);
        return (flags & 0x80) != 0 ? std::size_t{3} << ((flags & 7) + 1) : 0;
    }
    std::string subBlock()
    {
        const auto length = static_cast<std::size_t>(next());
        m_place += length;
        return m_bytes.substr(m_place - length, length);
    }
    void takeExtension(std::vector<int>& repetitions)
    {
        const bool isOfApplication = next() == 0xff;
        const bool isLoop = subBlock() == "NETSCAPE2.0" && isOfApplication;
        for (std::string block = subBlock(); !block.empty(); block = subBlock()) {
            if (isLoop && block.size() == 3 && block[0] == 1)
                repetitions.push_back(static_cast<std::uint8_t>(block[1]) +
                                      256 * static_cast<std::uint8_t>(block[2]));
        }
    }
    void takePicture(int& pictures)
    {
        ++pictures;
        m_place += 9 + coloursBehind(m_place + 8) + 1;
        while (!subBlock().empty()) {
        }
    }

    const std::string& m_bytes;
    std::size_t m_place = 0;
};

} // namespace

TEST_F(GIFFile, IsNotThereWhenTheProgramEndsMeanwhile)
{
    // Noise, of which only so much is kept before it is written; the rest takes seconds.
    Videos::make({"-f", "lavfi", "-i", "color=gray:s=480x360:r=10:d=12,noise=alls=100:allf=t",
                  "-pix_fmt", "yuv420p", "-preset", "ultrafast", "-crf", "30", "-g", "10", m_film});
    const Outcome outcome = run({{TAMRIK_GIF_PROGRAM, m_film, m_gif, "100000"}, {}});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(fs::is_empty(m_folder / "out"));
}

TEST_F(GIFFile, IsNotThereWhenTheProgramIsKilledMeanwhile)
{
    writeFile(m_folder / "raw", Videos::greyFrames(60));
    Videos::encode(m_folder / "raw", {}, m_film);
    // The system kills it when it writes more than 1024 bytes.
    const Outcome outcome = run({{"sh", "-c", "ulimit -c 0; ulimit -f 2; exec \"$@\"", "sh",
                                  TAMRIK_GIF_PROGRAM, m_film, m_gif, "1000000"},
                                 {}});
    EXPECT_EQ(outcome.signal, SIGXFSZ) << outcome.status << outcome.error;
    EXPECT_TRUE(fs::is_empty(m_folder / "out"));
}

TEST_F(GIFFile, PlaysForEver)
{
    writeFile(m_folder / "raw", Videos::greyFrames(9));
    Videos::encode(m_folder / "raw", {}, m_film);
    for (const std::vector<double>& times : {std::vector<double>{0}, {0, 0.1, 0.2}}) {
        const PossibleFailure failure =
            AnimatedGIF::write(QString::fromStdString(m_film), {times, 10, {800, 800}},
                               QString::fromStdString(m_gif), {});
        ASSERT_FALSE(failure) << failure->message;
        const std::string bytes = contentOf(m_gif);
        const Blocks::Found found = Blocks(bytes).find();
        EXPECT_EQ(found.pictures, static_cast<int>(times.size()));
        EXPECT_EQ(found.before, std::vector<int>{0});
        EXPECT_EQ(found.behind, std::vector<int>{});
    }
}
