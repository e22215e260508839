#pragma once

#include "Support/FileDescriptor.h"

/// Wakes a thread that waits for file descriptors.
class Alarm {
public:
    Alarm();

    /// Readable after ring(), until clear().
    int descriptor() const { return m_descriptor.get(); }

    /// From any thread.
    void ring() const;
    void clear() const;

private:
    FileDescriptor m_descriptor;
};
