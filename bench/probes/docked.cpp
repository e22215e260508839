// Tells when a tray takes in a program's icon.
//
// usage: bench_docked
//
// Prints "watching", then "docked" as soon as a window that was put on the screen is taken into
// another one, which is what a tray does with an icon (XEmbed). A window manager does it with the
// windows it decorates, so none of those may come meanwhile.

#include "probes/Connection.h"

#include <cstdio>
#include <exception>
#include <stdexcept>

int main()
try {
    using namespace Bench;
    const Connection connection;
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, connection.root(), XCB_CW_EVENT_MASK, &events);
    connection.finish();
    std::puts("watching");
    std::fflush(stdout);
    const auto deadline = Clock::now() + patience;
    while (const auto event = connection.nextEvent(deadline)) {
        if ((event->response_type & 0x7f) != XCB_REPARENT_NOTIFY)
            continue;
        const auto& moved =
            *static_cast<const xcb_reparent_notify_event_t*>(static_cast<void*>(event.get()));
        if (moved.parent == connection.root())
            continue;
        std::puts("docked");
        return 0;
    }
    throw std::runtime_error("no icon came");
} catch (const std::exception& error) {
    std::fprintf(stderr, "bench_docked: %s\n", error.what());
    return 1;
}
