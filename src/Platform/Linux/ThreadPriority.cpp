#include "Platform/ThreadPriority.h"

#include <sys/resource.h>
#include <unistd.h>

namespace {

/// A tenth of what a usual thread gets, where both want the same processor.
constexpr int niceness = 10;

} // namespace

void Platform::lowerThreadPriority()
{
    // To Linux a thread is a process in this respect.
    const auto thread = static_cast<id_t>(gettid());
    setpriority(PRIO_PROCESS, thread, getpriority(PRIO_PROCESS, thread) + niceness);
}
