#include "support/XServer.h"

#include <csignal>
#include <stdexcept>

#include <unistd.h>

namespace {

/// A display number that no other process picks: the next free one, which servers take by
/// themselves, may be somebody else's the moment that a server of ours is gone, while clients still
/// look for it.
int ownDisplayNumber()
{
    constexpr int perProcess = 10;
    static int used = 0;
    return 1000 + getpid() % 5000 * perProcess + used++ % perProcess;
}

} // namespace

XServer::XServer(const std::string& screen, const std::vector<std::string>& options)
{
    // Through this the server says its display number once it is ready. Its writing end has to
    // survive the exec, so it is not close-on-exec.
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe for Xvfb");
    Command command{{"Xvfb", ':' + std::to_string(ownDisplayNumber()), "-displayfd",
                     std::to_string(ends[1]), "-screen", "0", screen, "-nolisten", "tcp",
                     "-noreset"},
                    {}};
    command.words.insert(command.words.end(), options.begin(), options.end());
    m_process = std::make_unique<ChildProcess>(command);
    close(ends[1]);
    std::string number;
    char character = 0;
    while (read(ends[0], &character, 1) == 1 && character != '\n')
        number += character;
    close(ends[0]);
    if (number.empty())
        throw std::runtime_error("Xvfb did not start: " + m_process->wait().error);
    m_display = ':' + number;
}

XServer::~XServer()
{
    if (!m_process)
        return;
    m_process->send(SIGTERM); // so that it removes its lock and its socket
    m_process->wait();
}

void XServer::kill()
{
    m_process->send(SIGKILL);
    m_process->wait();
    m_process.reset();
    // It had no chance to clean up after itself.
    const std::string number = m_display.substr(1);
    unlink(("/tmp/.X" + number + "-lock").c_str());
    unlink(("/tmp/.X11-unix/X" + number).c_str());
}
