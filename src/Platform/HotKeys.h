#pragma once

#include <cstdint>
#include <functional>
#include <optional>

/// System-wide keyboard shortcuts. Main thread only.
namespace Platform {

/// The bits of a hot key's modifier mask.
namespace HotKeyModifier {
inline constexpr std::uint32_t command = 256; ///< Ctrl on a PC keyboard
inline constexpr std::uint32_t shift = 512;
inline constexpr std::uint32_t option = 2048;  ///< Alt on a PC keyboard
inline constexpr std::uint32_t control = 4096; ///< Super on a PC keyboard
} // namespace HotKeyModifier

/// One registration that the desktop granted.
struct HotKeyReference {
    std::uint32_t value = 0;
};

/// The one function that is told of presses, with the identifier given at registration. It runs on
/// the main thread, once a press however long the key is held.
void setHotKeyHandler(std::function<void(std::uint32_t identifier)> handler);

/// Asks for a hot key. `keyCode` is a virtual key code of the ANSI layout (1 is the key right of A)
/// and names a physical key whatever the keyboard layout. Absent when the desktop refuses: another
/// program or another registration of ours has it, or there is no such key.
std::optional<HotKeyReference> registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                              std::uint32_t identifier);

void unregisterHotKey(HotKeyReference reference);

} // namespace Platform
