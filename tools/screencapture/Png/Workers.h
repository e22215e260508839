#pragma once

#include <functional>

namespace Png {

/// How many processors this process may run on, as far as more threads are worth their while.
unsigned processors();

/// Calls `work` with 0 to `parts` - 1, each on a thread of its own, the first on the caller's. A
/// part for which no thread can be had comes after the first. Returns when all have ended, and
/// throws what one of them threw.
void inParallel(unsigned parts, const std::function<void(unsigned part)>& work);

} // namespace Png
