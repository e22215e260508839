#include "support/SoundServer.h"

#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <numbers>
#include <stdexcept>
#include <thread>

#include <pulse/simple.h>

namespace {

constexpr int rate = 48000;
constexpr std::size_t blockFrames = rate / 100;
constexpr double frequency = 1000;

} // namespace

SoundServer::SoundServer()
{
    start();
}

void SoundServer::start()
{
    const std::string socket = m_folder / "socket";
    std::filesystem::remove(socket);
    m_process = std::make_unique<ChildProcess>(Command{
        {"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "-L",
         "module-null-sink", "-L", "module-native-protocol-unix auth-anonymous=1 socket=" + socket},
        {{"HOME", m_folder.path().string()},
         {"XDG_RUNTIME_DIR", m_folder.path().string()},
         {"DBUS_SESSION_BUS_ADDRESS", "disabled:"},
         {"PULSE_SERVER", std::nullopt}}});
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!std::filesystem::exists(socket)) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("pulseaudio did not start");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

SoundServer::~SoundServer()
{
    if (m_process)
        kill();
}

std::string SoundServer::address() const
{
    return "unix:" + (m_folder / "socket");
}

void SoundServer::kill()
{
    m_process->send(SIGKILL);
    m_process->wait();
    m_process.reset();
}

struct SoundServer::Player::Stream {
    pa_simple* handle;
    std::size_t played = 0; // frames of the tone
};

SoundServer::Player::Player(const SoundServer& server)
{
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, rate, 1};
    // Two blocks on their way at most, so that what is handed over is heard soon.
    const pa_buffer_attr sizes{static_cast<std::uint32_t>(-1), 2 * blockFrames * sizeof(float),
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
    return static_cast<double>(pa_simple_get_latency(m_stream->handle, nullptr)) / 1e6;
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
