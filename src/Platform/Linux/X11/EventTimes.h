#pragma once

#include <cstdint>

/// Undoes what times that other programs made up do to Qt.
///
/// Qt takes the latest time it has met in an event for the server's, for good, and claims the
/// clipboard with it. Programs that ask for what was dropped on them may state any time: PCManFM
/// states the seconds since 1970. The server refuses a claim from the future, so that nothing could
/// be copied after such a drop.
namespace X11 {

/// Looks out for such times from now on. Call once, when there is an application object.
void watchEventTimes();

/// Sets Qt's time right if it is not. To be called before it is stated to the server or to a window
/// manager; not while data are dragged, which are told from others by the time of their drag.
void mendTime();

/// The time of an event of the user's that nobody else gets to see, a hot key say.
void noteTime(std::uint32_t time);

/// Has Qt state the time of the user's newest event to window managers, which give the keyboard to
/// a window only when the user has done something that asks for it.
void stateNewestTime();

} // namespace X11
