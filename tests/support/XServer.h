#pragma once

#include "support/ChildProcess.h"

#include <memory>
#include <string>
#include <vector>

/// A virtual X server (Xvfb) of its own, up when the constructor returns and gone with the object.
class XServer {
public:
    /// `screen` is WIDTHxHEIGHTxDEPTH in pixels and bits; `options` are further ones for Xvfb.
    /// Throws std::runtime_error when the server does not come up.
    explicit XServer(const std::string& screen, const std::vector<std::string>& options = {});
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    /// What DISPLAY has to be, such as ":7".
    const std::string& display() const { return m_display; }

    /// Ends it at once, with its clients still there.
    void kill();

private:
    std::unique_ptr<ChildProcess> m_process;
    std::string m_display;
};
