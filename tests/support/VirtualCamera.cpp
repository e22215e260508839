#include "support/VirtualCamera.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <thread>

namespace fs = std::filesystem;

namespace {

const std::string name = "tamrik-test-camera";

void await(const std::string& what, const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error(what + " did not come");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

} // namespace

VirtualCamera::VirtualCamera(const std::string& bus, State state)
    : m_environment({{"HOME", folder()},
                     {"XDG_CONFIG_HOME", folder()},
                     {"XDG_STATE_HOME", folder()},
                     {"XDG_RUNTIME_DIR", folder()},
                     {"PIPEWIRE_RUNTIME_DIR", folder()},
                     {"PIPEWIRE_REMOTE", std::nullopt},
                     {"DBUS_SESSION_BUS_ADDRESS", bus}})
{
    for (const auto& [part, monitors] :
         std::map<std::string, std::string>{{"main.lua.d", "v4l2_monitor.enabled = false\n"
                                                           "libcamera_monitor.enabled = false\n"
                                                           "alsa_monitor.enabled = false\n"},
                                            {"bluetooth.lua.d", "bluez_monitor.enabled = false\n"}})
    {
        const fs::path settings = fs::path(m_folder / "wireplumber") / part;
        fs::create_directories(settings);
        writeFile(settings / "51-no-devices.lua", monitors);
    }
    startServer();
    if (state == State::PluggedIn)
        plugIn();
}

void VirtualCamera::startServer()
{
    m_server = start({"pipewire"});
    await("pipewire", [this] { return fs::exists(m_folder / "pipewire-0"); });
    m_manager = start({"wireplumber"});
}

void VirtualCamera::restartServer()
{
    m_camera.reset();
    m_manager.reset();
    m_server.reset();
    fs::remove(m_folder / "pipewire-0");
    startServer();
}

void VirtualCamera::plugIn()
{
    m_camera = start({"gst-launch-1.0", "-q", "videotestsrc", "is-live=true", "pattern=smpte", "!",
                      "video/x-raw,format=YUY2,width=640,height=480,framerate=30/1", "!",
                      "pipewiresink", "mode=provide",
                      "stream-properties=props,media.class=Video/Source,media.role=Camera,"
                      "node.name=" +
                          name + ",node.description=Camera"});
    await("the camera", [this] { return isKnown(); });
}

std::unique_ptr<ChildProcess> VirtualCamera::start(std::vector<std::string> words) const
{
    return std::make_unique<ChildProcess>(Command{std::move(words), m_environment});
}

bool VirtualCamera::isKnown() const
{
    const Outcome nodes = run({{"pw-cli", "ls", "Node"}, m_environment});
    return nodes.output.find(name) != std::string::npos;
}
