#include "Workers.h"

#include <algorithm>
#include <future>
#include <system_error>
#include <vector>

#include <sched.h>

namespace Png {

namespace {

/// More would gain little: reading the screen and writing the file stay with one.
constexpr int mostWorkers = 8;

std::future<void> begin(const std::function<void(unsigned)>& work, unsigned part)
{
    try {
        return std::async(std::launch::async, [&work, part] { work(part); });
    } catch (const std::system_error&) { // no more threads
        return std::async(std::launch::deferred, [&work, part] { work(part); });
    }
}

} // namespace

unsigned processors()
{
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    // Fails on a machine of more processors than the set has room for.
    const bool isKnown = sched_getaffinity(0, sizeof allowed, &allowed) == 0;
    return static_cast<unsigned>(
        std::clamp(isKnown ? CPU_COUNT(&allowed) : mostWorkers, 1, mostWorkers));
}

void inParallel(unsigned parts, const std::function<void(unsigned part)>& work)
{
    // Should one throw, these wait for their threads before they go.
    std::vector<std::future<void>> others;
    others.reserve(parts);
    for (unsigned part = 1; part < parts; ++part)
        others.push_back(begin(work, part));
    work(0);
    for (std::future<void>& other : others)
        other.get();
}

} // namespace Png
