#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>

namespace X11 {

/// The X key code of the key that a virtual key code of the ANSI layout names. Both name physical
/// keys, so the keyboard layout does not matter. Absent when a PC keyboard has no such key.
std::optional<xcb_keycode_t> keyCodeFromVirtual(std::uint32_t virtualKeyCode);

} // namespace X11
