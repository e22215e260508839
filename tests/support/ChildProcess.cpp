#include "support/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::vector<std::string> environmentOf(const Command& command)
{
    std::vector<std::string> entries;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        if (!command.environment.contains(text.substr(0, text.find('='))))
            entries.push_back(text);
    }
    for (const auto& [name, value] : command.environment) {
        if (value)
            entries.push_back(name + '=' + *value);
    }
    return entries;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// What a program says goes to memory, not to a pipe: it never has to wait for its reader.
int openMemory()
{
    const int file = memfd_create("child-output", MFD_CLOEXEC);
    if (file < 0)
        throw std::runtime_error("no memory for a child's output");
    return file;
}

std::string takeAll(int& file)
{
    std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
    const ssize_t count = pread(file, text.data(), text.size(), 0);
    close(file);
    file = -1;
    text.resize(static_cast<std::size_t>(count < 0 ? 0 : count));
    return text;
}

} // namespace

ChildProcess::ChildProcess(const Command& command)
    : m_output(openMemory())
    , m_error(openMemory())
{
    std::vector<std::string> words = command.words;
    std::vector<std::string> environment = environmentOf(command);
    const std::vector<char*> wordPointers = pointersTo(words);
    const std::vector<char*> environmentPointers = pointersTo(environment);
    const pid_t parent = getpid();
    m_id = fork();
    if (m_id < 0)
        throw std::runtime_error("cannot fork");
    if (m_id > 0)
        return;

    // In the child; nothing here may allocate.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(127);
    dup2(open("/dev/null", O_RDONLY), 0);
    dup2(m_output, 1);
    dup2(m_error, 2);
    execvpe(wordPointers[0], wordPointers.data(), environmentPointers.data());
    _exit(127);
}

ChildProcess::~ChildProcess()
{
    if (m_isRunning) {
        send(SIGKILL);
        wait();
    }
}

void ChildProcess::send(int signal) const
{
    kill(m_id, signal);
}

Outcome ChildProcess::wait()
{
    int status = 0;
    while (waitpid(m_id, &status, 0) < 0 && errno == EINTR) {
    }
    m_isRunning = false;
    Outcome outcome;
    if (WIFEXITED(status))
        outcome.status = WEXITSTATUS(status);
    if (WIFSIGNALED(status))
        outcome.signal = WTERMSIG(status);
    outcome.output = takeAll(m_output);
    outcome.error = takeAll(m_error);
    return outcome;
}

Outcome run(const Command& command)
{
    return ChildProcess(command).wait();
}
