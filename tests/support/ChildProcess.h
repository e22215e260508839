#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

/// A program to run: found in PATH unless its name holds a slash.
struct Command {
    std::vector<std::string> words;
    /// What differs from this process's environment; absent values are unset.
    std::map<std::string, std::optional<std::string>> environment;
};

/// How a program ended, and what it said.
struct Outcome {
    int status = -1; ///< Exit status; -1 when a signal ended it.
    int signal = 0;  ///< The signal that ended it, or 0.
    std::string output;
    std::string error;
};

/// A running program. It is killed when this object goes, and when this process ends.
class ChildProcess {
public:
    /// Throws std::runtime_error when there can be no process. A program that cannot be executed
    /// ends with status 127.
    explicit ChildProcess(const Command& command);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t id() const { return m_id; }
    void send(int signal) const;

    /// Waits until it ends. Call it once.
    Outcome wait();

private:
    pid_t m_id = -1;
    bool m_isRunning = true;
    int m_output;
    int m_error;
};

/// Runs a program to its end.
Outcome run(const Command& command);
