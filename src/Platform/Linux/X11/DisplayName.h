#pragma once

#include <QString>

namespace X11 {

/// The display and screen that the environment names, in one spelling of the several that mean the
/// same: ":0" is ":0.0". Empty when it names none.
QString displayName();

} // namespace X11
