#pragma once

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

} // namespace X11
