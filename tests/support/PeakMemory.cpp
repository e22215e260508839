#include "support/PeakMemory.h"

#include <fstream>
#include <stdexcept>
#include <string>

namespace {

/// The most that was resident since it was last reset, in bytes.
long peak()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        long kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes)
            return kilobytes * 1024;
    }
    throw std::runtime_error("the kernel does not say how much memory was used");
}

} // namespace

PeakMemory::PeakMemory()
{
    std::ofstream reset("/proc/self/clear_refs");
    reset << "5" << std::flush; // as proc(5) has it: the peak is what is resident now
    if (!reset)
        throw std::runtime_error("the peak of memory cannot be reset");
    m_start = peak();
}

long PeakMemory::growth() const
{
    return peak() - m_start;
}
