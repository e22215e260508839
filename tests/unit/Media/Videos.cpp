#include "unit/Media/Videos.h"

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"
#include "unit/Media/PngFile.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr int step = 3;
constexpr int darkest = 20;

} // namespace

void Videos::make(const std::vector<std::string>& words)
{
    std::vector<std::string> all{"ffmpeg", "-nostdin", "-loglevel", "error", "-y"};
    all.insert(all.end(), words.begin(), words.end());
    const Outcome outcome = run({all, {}});
    ASSERT_EQ(outcome.status, 0) << outcome.error;
}

std::string Videos::probed(const std::string& path, const std::string& entry)
{
    const Outcome outcome =
        run({{"ffprobe", "-loglevel", "error", "-select_streams", "v:0", "-show_entries",
              "stream=" + entry, "-of", "default=nokey=1:noprint_wrappers=1", path},
             {}});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    return outcome.output.substr(0, outcome.output.find('\n'));
}

std::string Videos::greyFrames(int count)
{
    std::string raw;
    for (int i = 0; i < count; ++i)
        raw += std::string(64 * 48, static_cast<char>(greyOf(i)));
    return raw;
}

int Videos::greyOf(int number)
{
    return darkest + step * number;
}

int Videos::numberOf(int grey)
{
    return static_cast<int>(std::lround((grey - darkest) / static_cast<double>(step)));
}

void Videos::encode(const std::string& raw, const std::vector<std::string>& options,
                    const std::string& file)
{
    std::vector<std::string> words{
        "-f", "rawvideo", "-pix_fmt", "gray",    "-s",   "64x48", "-r", std::to_string(frameRate),
        "-i", raw,        "-pix_fmt", "yuv420p", "-crf", "4"};
    words.insert(words.end(), options.begin(), options.end());
    words.push_back(file);
    make(words);
}

std::string Videos::withMatrix(std::string bytes, int a, int b, int c, int d)
{
    const std::size_t header = bytes.find("tkhd");
    EXPECT_NE(header, std::string::npos);
    // 16.16 numbers, after the name and 40 bytes of a version 0 header (ISO/IEC 14496-12, 8.3.2).
    const auto put = [&](std::size_t index, int value) {
        bytes.replace(header + 44 + 4 * index, 4,
                      PngFile::number(static_cast<std::uint32_t>(value) << 16));
    };
    put(0, a);
    put(1, b);
    put(3, c);
    put(4, d);
    return bytes;
}
