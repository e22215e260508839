#pragma once

#include "Support/Result.h"

/// Whether the program starts when the user logs in.
namespace Platform {

bool loginItemEnabled();
[[nodiscard]] PossibleFailure enableLoginItem();
[[nodiscard]] PossibleFailure disableLoginItem();

} // namespace Platform
