#pragma once

#include <cstdint>
#include <vector>

namespace X11 {

/// Which bits of an event's state the keyboard's modifier keys set, at the time it was made.
class ModifierMap {
public:
    /// Asks the server. Only when there is a connection.
    ModifierMap();

    /// The state bits for a mask of Platform::HotKeyModifier bits.
    std::uint16_t fromHotKeyMask(std::uint32_t mask) const;

    /// The state bits that hot keys look at: Shift, Ctrl, Alt and Super.
    std::uint16_t relevant() const;

    /// Every combination of the locks that may be on while a hot key is pressed: CapsLock, NumLock,
    /// and ScrollLock where it sets a modifier.
    std::vector<std::uint16_t> lockVariants() const;

    friend bool operator==(const ModifierMap&, const ModifierMap&) = default;

private:
    std::uint16_t m_alt;
    std::uint16_t m_super;
    std::uint16_t m_numLock;
    std::uint16_t m_scrollLock = 0; // most keyboards have it set none
};

} // namespace X11
