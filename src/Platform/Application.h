#pragma once

#include "Support/Result.h"

/// How the program presents itself to the desktop.
namespace Platform {

/// Called first of all, before the application object is made: settles which window system to use.
/// Fails, with a line for the user, when there is no desktop to run on.
[[nodiscard]] PossibleFailure prepareApplication();

/// No task bar entry, no main menu; the program goes on when its last window closes.
void becomeAccessory();

/// Makes the program the active one, whichever is now, where the desktop knows of such a thing; X11
/// only knows of windows.
void activateIgnoringOthers();

} // namespace Platform
