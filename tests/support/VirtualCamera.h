#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <csignal>
#include <memory>
#include <string>

/// A PipeWire of its own that knows no device of this machine, and one camera on it, which sees
/// vertical bars: from the left white, yellow, cyan, green, magenta, red, blue. All is gone with
/// the object.
class VirtualCamera {
public:
    enum class State { PluggedIn, Unplugged };

    /// `bus` is the address of a session bus. Throws std::runtime_error when it does not come up.
    explicit VirtualCamera(const std::string& bus, State state = State::PluggedIn);

    /// What PIPEWIRE_RUNTIME_DIR has to be.
    std::string folder() const { return m_folder.path(); }

    /// Returns when PipeWire knows it.
    void plugIn();
    /// At once, like a pulled cable.
    void unplug() { m_camera.reset(); }

    /// PipeWire crashes, and is started anew without a camera.
    void restartServer();
    /// PipeWire answers nobody any more, or goes on.
    void freeze() { m_server->send(SIGSTOP); }
    void thaw() { m_server->send(SIGCONT); }

private:
    void startServer();
    std::unique_ptr<ChildProcess> start(std::vector<std::string> words) const;
    bool isKnown() const;

    TemporaryFolder m_folder;
    std::map<std::string, std::optional<std::string>> m_environment;
    // Each goes before what it needs.
    std::unique_ptr<ChildProcess> m_server;
    std::unique_ptr<ChildProcess> m_manager;
    std::unique_ptr<ChildProcess> m_camera;
};
