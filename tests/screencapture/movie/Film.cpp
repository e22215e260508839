#include "screencapture/movie/Film.h"

#include "screencapture/Tool.h"

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sstream>
#include <thread>

namespace Film {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr auto patience = 30s;

void await(const std::string& what, const std::function<bool()>& isDone)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!isDone()) {
        if (std::chrono::steady_clock::now() > deadline) {
            ADD_FAILURE() << "waited in vain: " << what;
            return;
        }
        std::this_thread::sleep_for(2ms);
    }
}

std::uintmax_t sizeOf(const std::string& file)
{
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
}

std::string runReader(const std::vector<std::string>& words)
{
    const Outcome outcome = run(Command{words, {{"LC_ALL", "C"}}});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "") << words.front();
    return outcome.output;
}

void readEntry(Facts& facts, const std::string& section, const std::string& kind,
               const std::string& key, const std::string& value)
{
    if (section == "[FORMAT]" && key == "duration")
        facts.duration = std::atof(value.c_str());
    if (section == "[STREAM]" && kind == "audio" && key == "codec_name")
        facts.soundCodec = value;
    if (kind != "video")
        return;
    if (section == "[FRAME]" && key == "pts_time")
        facts.frames.back().time = std::atof(value.c_str());
    if (section == "[FRAME]" && key == "key_frame") // comes first
        facts.frames.push_back({0, value == "1"});
    if (section == "[STREAM]")
        facts.video[key] = value;
}

} // namespace

Command command(const XServer& server, const std::string& rectangle, const std::string& file,
                const std::vector<std::string>& options)
{
    std::vector<std::string> words{"-v", "-x"};
    words.insert(words.end(), options.begin(), options.end());
    words.insert(words.end(), {"-R", rectangle, file});
    return Tool::command(server.display(), words);
}

Recorder::Recorder(const XServer& server, const std::string& rectangle, const std::string& file,
                   const std::vector<std::string>& options,
                   const std::map<std::string, std::optional<std::string>>& environment)
    : m_file(file)
{
    Command tool = command(server, rectangle, file, options);
    for (const auto& [name, value] : environment)
        tool.environment[name] = value;
    m_process = std::make_unique<ChildProcess>(tool);
}

void Recorder::awaitFile() const
{
    await("the file", [&] { return sizeOf(m_file) > 0; });
}

void Recorder::awaitGrowth() const
{
    for (int i = 0; i < 2; ++i) {
        const std::uintmax_t before = sizeOf(m_file);
        await("the file growing", [&] { return sizeOf(m_file) > before; });
    }
}

void Recorder::stop()
{
    send(SIGINT);
    const Outcome outcome = wait();
    EXPECT_EQ(outcome.status, 0) << outcome.signal;
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.output, "");
}

Facts read(const std::string& file)
{
    // Everything at once, since starting takes the program longer than reading.
    std::istringstream lines(runReader(
        {"ffprobe", "-v", "error", "-of", "default", "-show_entries",
         "format=duration:stream=codec_type,codec_name,width,height,pix_fmt,color_range,color_"
         "space,"
         "color_primaries,color_transfer,has_b_frames:frame=media_type,key_frame,pts_time",
         file}));
    Facts facts;
    std::string section;
    std::vector<std::pair<std::string, std::string>> entries;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("SIDE_DATA") != std::string::npos) // stands inside a frame's section
            continue;
        if (line.starts_with("[/")) {
            std::string kind;
            for (const auto& [key, value] : entries) {
                if (key == "codec_type" || key == "media_type")
                    kind = value;
            }
            for (const auto& [key, value] : entries)
                readEntry(facts, section, kind, key, value);
            entries.clear();
        } else if (line.starts_with('[')) {
            section = line;
        } else if (const auto equals = line.find('='); equals != std::string::npos) {
            entries.emplace_back(line.substr(0, equals), line.substr(equals + 1));
        }
    }
    facts.width = std::atoi(facts.video["width"].c_str());
    facts.height = std::atoi(facts.video["height"].c_str());
    facts.codec = facts.video["codec_name"];
    for (const char* const key :
         {"pix_fmt", "color_range", "color_space", "color_primaries", "color_transfer"})
        facts.pixels += (facts.pixels.empty() ? "" : " ") + facts.video[key];
    facts.bFrames = std::atoi(facts.video["has_b_frames"].c_str());
    EXPECT_FALSE(facts.frames.empty()) << file;
    return facts;
}

std::vector<PngImage> pictures(const std::string& file)
{
    const Facts facts = read(file);
    const std::string bytes = runReader(
        {"ffmpeg", "-v", "error", "-i", file, "-an", "-vf",
         "scale=in_color_matrix=bt709:in_range=tv:flags=accurate_rnd+full_chroma_int", "-fps_mode",
         "passthrough", "-enc_time_base", "1:90000", "-f", "rawvideo", "-pix_fmt", "rgb24", "-"});
    const auto size = static_cast<std::size_t>(facts.width * facts.height * 3);
    std::vector<PngImage> all;
    for (std::size_t at = 0; size > 0 && at + size <= bytes.size(); at += size) {
        PngImage image;
        image.width = static_cast<std::uint32_t>(facts.width);
        image.height = static_cast<std::uint32_t>(facts.height);
        image.rgb.assign(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                         bytes.begin() + static_cast<std::ptrdiff_t>(at + size));
        all.push_back(std::move(image));
    }
    EXPECT_EQ(all.size(), facts.frames.size());
    return all;
}

bool isLike(std::uint32_t a, std::uint32_t b, int tolerance)
{
    for (const int shift : {0, 8, 16}) {
        const int left = static_cast<int>(a >> shift & 0xff);
        const int right = static_cast<int>(b >> shift & 0xff);
        if (std::abs(left - right) > tolerance)
            return false;
    }
    return true;
}

} // namespace Film
