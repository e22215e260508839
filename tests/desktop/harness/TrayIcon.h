#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/WaitUntil.h"

#include <QtCore/QRect>

namespace Desktop {

class VirtualDesktop;

/// Waits for the icon of a process in the desktop's tray, and tells where it is, in pixels of the
/// whole desktop: a rectangle in whose middle a user would click. In a StatusNotifierItem tray it
/// is found only while no other program has an icon.
Outcome<QRect> awaitTrayIcon(const VirtualDesktop& desktop, qint64 pid,
                             std::chrono::milliseconds deadline = patience);

/// Where it is now.
Outcome<QRect> findTrayIcon(const VirtualDesktop& desktop, qint64 pid);

} // namespace Desktop
