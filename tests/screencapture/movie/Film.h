#pragma once

#include "support/ChildProcess.h"
#include "support/PngReader.h"
#include "support/XServer.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// Helpers for making movies with the built tool, and for reading them with other programs.
namespace Film {

using Seconds = std::chrono::duration<double>;
using Instant = std::chrono::steady_clock::time_point;

/// The tool filming a display.
class Recorder {
public:
    Recorder(const XServer& server, const std::string& rectangle, const std::string& file,
             const std::vector<std::string>& options = {"-C"},
             const std::map<std::string, std::optional<std::string>>& environment = {});

    /// Waits until the file is there. Fails the running test when that takes too long.
    void awaitFile() const;

    /// Waits until the file has grown twice, so that everything of before is in it.
    void awaitGrowth() const;

    void send(int signal) const { m_process->send(signal); }
    pid_t id() const { return m_process->id(); }
    Outcome wait() { return m_process->wait(); }

    /// Ends it, which has to go well and without a word.
    void stop();

private:
    std::string m_file;
    std::unique_ptr<ChildProcess> m_process;
};

/// The command that a Recorder runs.
Command command(const XServer& server, const std::string& rectangle, const std::string& file,
                const std::vector<std::string>& options = {"-C"});

struct Frame {
    double time = 0;
    bool isKey = false;
};

/// What ffprobe has to say.
struct Facts {
    int width = 0;
    int height = 0;
    double duration = 0;
    std::string codec;
    std::string pixels; ///< Format, range, matrix, primaries, transfer, with blanks between.
    int bFrames = -1;
    std::string soundCodec; ///< Empty when there is no sound.
    std::vector<Frame> frames;
    std::map<std::string, std::string> video; ///< The picture track in ffprobe's words.
};

/// Fails the running test when a part of the file cannot be decoded.
Facts read(const std::string& file);

/// Every frame's pixels.
std::vector<PngImage> pictures(const std::string& file);

/// Whether two colours 0xRRGGBB are alike but for what a codec makes of them.
bool isLike(std::uint32_t a, std::uint32_t b, int tolerance = 20);

} // namespace Film
