#pragma once

/// How much more memory this process comes to hold, in bytes, than when the object was made. Linux.
class PeakMemory {
public:
    PeakMemory();
    long growth() const;

private:
    long m_start;
};
