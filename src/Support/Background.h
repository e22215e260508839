#pragma once

#include <QThreadPool>

/// Work beside the main thread.
namespace Background {

/// Threads for what takes long: each piece of work has one of its own, and none waits for another.
/// The end of the program waits for them. Any thread.
QThreadPool& threads();

} // namespace Background
