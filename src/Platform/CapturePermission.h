#pragma once

/// The desktop's permission to look at the screen.
namespace Platform {

bool preflightScreenCaptureAccess();

/// Asks the user; the answer may come later than the return.
bool requestScreenCaptureAccess();

} // namespace Platform
