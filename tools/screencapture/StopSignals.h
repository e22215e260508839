#pragma once

#include "Support/FileDescriptor.h"

/// The signals that end a movie: SIGINT, SIGTERM, and SIGHUP unless it was ignored to begin with
/// (as nohup has it). They are never handled where they strike: they wait, blocked, until somebody
/// looks.
class StopSignals {
public:
    /// Keeps them waiting from now on: in this thread, in those that it starts, and in the program
    /// that it becomes. A parent that ignored SIGINT, as a shell does for what it runs in the
    /// background, shall not make a movie that cannot be ended.
    static void hold();

    /// Holds them.
    StopSignals();

    /// Readable when one has come.
    int descriptor() const { return m_descriptor.get(); }

    /// The one that has come, or 0. Tells of each once.
    int take() const;

    /// Ends this process by `signal`, as if nobody had ever held it.
    [[noreturn]] static void endBy(int signal);

private:
    FileDescriptor m_descriptor;
};
