#pragma once

#include <QtGlobal>

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

/// Qt's own connection to the X server. Main thread only.
namespace X11 {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

/// Owns a reply, event or error that libxcb allocated.
template <typename T>
using Reply = std::unique_ptr<T, FreeReply>;

/// Whether an X server answers at the display that the environment names.
bool canConnect();

/// Null when Qt does not run on X11.
xcb_connection_t* connection();

/// The screen that Qt uses. Only when there is a connection.
const xcb_screen_t& screen();

/// The number of that screen.
int screenNumber();

/// The atom of that name, made when it does not exist.
xcb_atom_t atom(const char* name);

/// A property of 32-bit values; empty when the window has none of that name and format.
std::vector<std::uint32_t> property32(xcb_window_t window, const char* name);

} // namespace X11
