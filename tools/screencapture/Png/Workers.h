#pragma once

#include <cstdint>
#include <functional>

namespace Png {

/// How many threads a picture of this size, in pixels, is worth on this machine: one when it is
/// small, and no more than this process has processors to run on.
unsigned workersFor(std::uint32_t width, std::uint32_t height);

/// Calls `work` with 0 to `parts` - 1, each on a thread of its own, the first on the caller's. A
/// part for which no thread can be had comes after the first. Returns when all have ended, and
/// throws what one of them threw.
void inParallel(unsigned parts, const std::function<void(unsigned part)>& work);

} // namespace Png
