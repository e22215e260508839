#pragma once

#include "Platform/Linux/X11/Connection.h"
#include "Support/ScreenTable.h"

#include <vector>

namespace X11 {

/// The table of screens as Qt 6.4 would make it with no QT_ variable set: the monitors of RandR 1.5
/// with the primary one first (the first one when none is), or the whole root window when the
/// server has no RandR. Each frame keeps its native distance from the primary screen; its size is
/// the pixels' by the scale, rounded to whole points.
Result<std::vector<ScreenTable::Screen>> screens(const Connection& connection);

/// The table for monitors in order, the primary one first; their frames are made here.
std::vector<ScreenTable::Screen> asTable(std::vector<ScreenTable::Screen> monitors, double scale);

} // namespace X11
