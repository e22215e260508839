#pragma once

#include "probes/Connection.h"

#include <string>
#include <vector>

#include <xcb/damage.h>

namespace Bench {

/// Some pixels of the screen, watched as a person in front of it would see them: with every window
/// on it, and through the compositor if there is one.
class Points {
public:
    struct Point {
        int x = 0;
        int y = 0;
    };
    using Colours = std::vector<std::uint32_t>;

    /// Each word is X,Y. Throws std::runtime_error when one is not.
    static std::vector<Point> read(const std::vector<std::string>& words);

    Points(const Connection& connection, std::vector<Point> points);

    Colours colours() const;

    /// Waits until the points look other than `before`, all of them, and for good: what stands
    /// there first may be a window manager's frame, or half of a picture. Returns the moment from
    /// which on they looked as they stayed. Throws std::runtime_error when some of them keep their
    /// colour.
    Clock::time_point awaitOtherThan(const Colours& before) const;

    /// Waits until they are `wanted` again; returns the moment when that was seen.
    Clock::time_point await(const Colours& wanted) const;

private:
    /// Calls `look` with the colours as they are now and after each change, and when there was none
    /// for a while, until it returns true or `deadline` is past. Returns what it returned last.
    template <class Look>
    bool watch(Clock::time_point deadline, Look look) const;

    const Connection& m_connection;
    std::vector<Point> m_points;
    xcb_damage_damage_t m_damage;
    std::uint8_t m_damageEvent;
};

} // namespace Bench
