#pragma once

#include "Platform/Linux/X11/Handles.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

/// Qt's own connection to the X server. Main thread only.
namespace X11 {

/// Null when Qt does not run on X11.
xcb_connection_t* qtConnection();

/// The screen that Qt uses. Only when there is a connection.
const xcb_screen_t& qtScreen();

/// The number of that screen.
int qtScreenNumber();

/// The atom of that name, made when it does not exist. Asked for once in a process.
xcb_atom_t atom(const char* name);

/// The number of the first kind of event of a protocol extension; 0 when the server lacks it.
std::uint8_t firstEventOf(const char* extension);

/// The number that stands in front of a protocol extension's events; 0 when the server lacks it.
std::uint8_t opcodeOf(const char* extension);

/// A property of 32-bit values; empty when the window has none of that name and format.
std::vector<std::uint32_t> property32(xcb_window_t window, const char* name);

/// The same of several windows, in one round trip.
std::vector<std::vector<std::uint32_t>> properties32(const std::vector<xcb_window_t>& windows,
                                                     const char* name);

} // namespace X11
