#pragma once

#include "Support/Result.h"

/// The tool's exit statuses besides 0.
namespace ExitStatus {
inline constexpr int failed = 1;
inline constexpr int misused = 2;
} // namespace ExitStatus

/// Says on standard error, in one line after the tool's name, what is wrong.
void report(const Failure& failure);
