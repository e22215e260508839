#pragma once

#include <QtGlobal>

QT_FORWARD_DECLARE_CLASS(QMenu)

/// Menus that open although no window of the program has the keyboard.
namespace Platform {

/// Opens `menu` where the pointer is, with the keyboard and the mouse. While another program holds
/// them (whoever started this may still have the key down that did it) the menu waits, for at most
/// two seconds; then it opens all the same. Does nothing while it is open or waits already.
void popUpAtPointer(QMenu& menu);

} // namespace Platform
