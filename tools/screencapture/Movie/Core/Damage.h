#pragma once

#include "Support/ScreenTable.h"

#include <vector>

/// Which parts of the screen are looked at again.
namespace Damage {

/// What a server says has changed, in pixels of its root window, as parts of `area` in pixels from
/// its top left corner: cut to it, grown to even coordinates (but not over its edge), disjoint, and
/// so few that asking for each costs less than asking for more than has changed.
std::vector<ScreenTable::PixelRect> parts(const std::vector<ScreenTable::PixelRect>& changed,
                                          const ScreenTable::PixelRect& area);

} // namespace Damage
