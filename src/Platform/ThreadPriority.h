#pragma once

namespace Platform {

/// Lets all other work on the machine come before that of this thread and of those that it starts
/// from now on, for as long as they live. On an idle machine nobody notices.
void lowerThreadPriority();

} // namespace Platform
