#pragma once

#include "Support/FileDescriptor.h"

#include <sys/types.h>

/// Notices when the process that started this one ends, however it ends.
class ParentWatch {
public:
    ParentWatch();

    /// Readable when it has ended; -1 on a kernel that cannot say so, where isGone() has to be
    /// asked from time to time.
    int descriptor() const { return m_process.get(); }

    bool isGone() const;

private:
    pid_t m_id;
    FileDescriptor m_process;
};
