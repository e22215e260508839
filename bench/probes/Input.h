#pragma once

#include "probes/Connection.h"

#include <initializer_list>

#include <xcb/xcb_keysyms.h>

namespace Bench {

/// Keys and mouse as the X server would get them from devices (the XTEST extension).
class Input {
public:
    explicit Input(const Connection& connection);
    ~Input();

    /// Presses the keys of the symbols one after the other and lets them go in reverse. Returns the
    /// moment just before the last of them went down.
    Clock::time_point press(std::initializer_list<xcb_keysym_t> symbols);

    void movePointer(int x, int y);
    /// Returns the moment just before.
    Clock::time_point setButton(bool down);

private:
    Clock::time_point fake(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0);
    std::uint8_t keyCode(xcb_keysym_t symbol) const;

    const Connection& m_connection;
    xcb_key_symbols_t* m_symbols;
};

/// The hot key that the programs of the benches hold: Alt+Shift+S. Returns the moment just before
/// the S went down.
Clock::time_point pressHotKey(Input& input);
void pressEscape(Input& input);

} // namespace Bench
