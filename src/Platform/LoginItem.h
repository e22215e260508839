#pragma once

#include "Support/Result.h"

/// Whether the program starts when the user logs in.
namespace Platform {

bool loginItemEnabled();
Result<void> enableLoginItem();
Result<void> disableLoginItem();

} // namespace Platform
