#pragma once

#include <QString>

/// The X display that the environment names.
namespace X11 {

/// The display and its screen, in one spelling of the several that mean the same: ":0" is ":0.0".
/// Empty when the environment names none.
QString displayName();

/// The number behind the dot of the name, such as 1 in ":0.1"; 0 when the environment names none.
int displayScreenNumber();

} // namespace X11
