#pragma once

#include <QtGlobal>

#include <functional>

QT_FORWARD_DECLARE_CLASS(QMenu)

/// Menus that open although no window of the program has the keyboard.
namespace Platform {

/// Opens `menu` where the pointer is, with the keyboard and the mouse. While another program holds
/// them (whoever started this may still have the key down that did it) the menu waits, for at most
/// two seconds; then it opens all the same. `isWanted` is asked each time before it would open, and
/// must say no while a window of ours has grabbed the keyboard or the mouse: a no ends the wait.
/// Does nothing while the menu is open or waits already. Main thread.
void popUpAtPointer(QMenu& menu, std::function<bool()> isWanted);

} // namespace Platform
