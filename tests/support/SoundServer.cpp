#include "support/SoundServer.h"

#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <functional>
#include <numbers>
#include <stdexcept>
#include <string>
#include <thread>

#include <pulse/error.h>
#include <pulse/simple.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int rate = 48000;
constexpr std::size_t blockFrames = rate / 100;
constexpr double frequency = 1000;

void await(const std::string& what, const std::function<bool()>& isThere)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!isThere()) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error(what + " did not start");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

/// Whether somebody takes connections there: the file comes before that.
bool isListening(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw std::runtime_error("too long for a socket: " + path);
    path.copy(address.sun_path, path.size());
    const int client = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    // A socket's address goes by its first member.
    const bool isIt = connect(client, reinterpret_cast<const sockaddr*>(&address), // NOLINT
                              sizeof address) == 0;
    close(client);
    return isIt;
}

} // namespace

SoundServer::SoundServer(Kind kind)
    : m_kind(kind)
{
    start();
}

SoundServer::~SoundServer()
{
    kill();
}

std::string SoundServer::socket() const
{
    switch (m_kind) {
    case Kind::PulseAudio:
        return m_folder / "socket";
    case Kind::PipeWire:
        return m_folder / "pulse/native";
    }
    return {};
}

std::string SoundServer::address() const
{
    return "unix:" + socket();
}

void SoundServer::start()
{
    std::filesystem::remove(socket());
    switch (m_kind) {
    case Kind::PulseAudio:
        startPulseAudio();
        return;
    case Kind::PipeWire:
        startPipeWire();
        return;
    }
}

void SoundServer::run(const std::vector<std::string>& words)
{
    m_processes.push_back(std::make_unique<ChildProcess>(
        Command{words,
                {{"HOME", m_folder.path().string()},
                 {"XDG_RUNTIME_DIR", m_folder.path().string()},
                 {"DBUS_SESSION_BUS_ADDRESS",
                  m_kind == Kind::PipeWire ? "unix:path=" + (m_folder / "bus") : "disabled:"},
                 {"PULSE_SERVER", std::nullopt}}}));
}

void SoundServer::startPulseAudio()
{
    run({"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "-L",
         "module-null-sink", "-L",
         "module-native-protocol-unix auth-anonymous=1 socket=" + socket()});
    await("pulseaudio", [this] { return isListening(socket()); });
}

void SoundServer::startPipeWire()
{
    run({"dbus-daemon", "--session", "--nofork", "--address=unix:path=" + (m_folder / "bus")});
    await("dbus-daemon", [this] { return isListening(m_folder / "bus"); });
    run({"pipewire"});
    await("pipewire", [this] { return isListening(m_folder / "pipewire-0"); });
    run({"wireplumber"}); // connects programs and devices
    run({"pipewire-pulse"});
    await("pipewire-pulse", [this] { return isListening(socket()); });
    const auto ask = [this](const std::string& words) {
        return ::run(Command{{"sh", "-c", "exec pactl " + words}, {{"PULSE_SERVER", address()}}});
    };
    ask("load-module module-null-sink media.class=Audio/Sink sink_name=null");
    await("a microphone of PipeWire's",
          [&] { return ask("get-default-source").output == "null.monitor\n"; });
}

void SoundServer::kill()
{
    for (auto process = m_processes.rbegin(); process != m_processes.rend(); ++process) {
        (*process)->send(SIGKILL);
        (*process)->wait();
    }
    m_processes.clear();
}

struct SoundServer::Player::Stream {
    pa_simple* handle;
    std::size_t played = 0; // frames of the tone
};

SoundServer::Player::Player(const SoundServer& server, double ahead)
{
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, rate, 1};
    const pa_buffer_attr sizes{static_cast<std::uint32_t>(-1),
                               static_cast<std::uint32_t>(std::lround(ahead * rate)) *
                                   std::uint32_t{sizeof(float)},
                               static_cast<std::uint32_t>(-1), blockFrames * sizeof(float),
                               static_cast<std::uint32_t>(-1)};
    pa_simple* const handle = pa_simple_new(server.address().c_str(), "test", PA_STREAM_PLAYBACK,
                                            nullptr, "tone", &spec, nullptr, &sizes, nullptr);
    if (!handle)
        throw std::runtime_error("cannot play");
    m_stream = std::make_unique<Stream>(Stream{handle});
}

SoundServer::Player::~Player()
{
    pa_simple_free(m_stream->handle);
}

double SoundServer::Player::delay() const
{
    int error = PA_OK;
    const pa_usec_t microseconds = pa_simple_get_latency(m_stream->handle, &error);
    if (error != PA_OK)
        throw std::runtime_error(std::string("no latency: ") + pa_strerror(error));
    return static_cast<double>(microseconds) / 1e6;
}

void SoundServer::Player::play(double seconds, float loudness)
{
    for (auto left = static_cast<long>(seconds * rate); left > 0; left -= blockFrames) {
        std::array<float, blockFrames> block{};
        for (float& sample : block) {
            const double phase = static_cast<double>(m_stream->played++) / rate * frequency;
            sample = loudness * static_cast<float>(std::sin(phase * 2 * std::numbers::pi));
        }
        pa_simple_write(m_stream->handle, block.data(), sizeof block, nullptr);
    }
}
