#pragma once

#include "desktop/harness/App.h"

#include <QtGui/QColor>

namespace Desktop {

/// The virtual desktop's background, and what it looks like below the probe's veil.
inline const QColor backgroundColor(0x5b, 0x7a, 0x8c);
inline const QColor veiledColor(0x2d, 0x3d, 0x46);

/// Starts the small program that shows what programs on a desktop get to see: probe/Probe.cpp.
inline Outcome<std::unique_ptr<App>> startProbe(const VirtualDesktop& desktop,
                                                const QStringList& arguments)
{
    return App::start(desktop, QStringLiteral(TAMRIK_DESKTOP_PROBE), arguments);
}

} // namespace Desktop
