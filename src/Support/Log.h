#pragma once

#include <QString>

#include <functional>

/// The program's log: standard error, one line each, prefixed "Tamrik: ". Failures that have no
/// line of their own are silent.
namespace Log {

/// Writes `text` as one line. Callable from any thread.
void line(const QString& text);

/// Writes `text` as one line and aborts the process.
[[noreturn]] void fatal(const QString& text);

using Sink = std::function<void(const QString& text)>;

/// Sends lines to `sink` instead of standard error until it is called with an empty one; `fatal`
/// goes to standard error all the same. For tests; main thread, before other threads log.
void setSink(Sink sink);

} // namespace Log
