#pragma once

#include "Platform/Screens.h"

#include <QPixmap>

#include <optional>

namespace Platform {

/// The picture of `screen` as it is now, for an overlay to paint below itself where a translucent
/// window would not look so, or not be seen (an X server without a compositor, or with a game that
/// draws past it). Absent elsewhere, and when the screen cannot be read. In the screen's own
/// pixels: its device pixel ratio is 1, since another could not be set without copying it all.
std::optional<QPixmap> frozenBackdrop(const Screen& screen);

} // namespace Platform
