#pragma once

#include "Platform/Linux/X11/Connection.h"
#include "Support/ScreenTable.h"

/// Where a rectangle of the command line lies on the root window: by the program's own table of
/// screens, or else by the X server's. Fails when it lies wholly off the desktop.
Result<ScreenTable::Placement> placed(Geometry::TopLeftRect rectangle,
                                      const X11::Connection& connection);
