// How long after the mouse button is let go the picture is on the clipboard.
//
// usage: bench_confirm FOLDER OUTPUT X1,Y1 X2,Y2
//
// Presses Alt+Shift+S, waits until the screen shows the overlay at both points, drags from the
// first to the second, and fetches image/png from the clipboard as soon as it has a new owner.
// Writes what it got to OUTPUT and prints milliseconds since the button was let go: when the
// overlay was gone, when a file got its name in FOLDER, when the clipboard had its new owner, and
// when the last byte had been read.

#include "probes/Input.h"
#include "probes/Points.h"
#include "probes/Selection.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <future>
#include <stdexcept>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

using namespace Bench;

/// Tells when a file gets its name in a folder.
class NewName {
public:
    explicit NewName(const std::string& folder)
        : m_watch(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
    {
        if (m_watch < 0 || inotify_add_watch(m_watch, folder.c_str(), IN_CREATE | IN_MOVED_TO) < 0)
            throw std::runtime_error("cannot watch " + folder);
    }
    ~NewName() { close(m_watch); }

    Clock::time_point await() const
    {
        pollfd waited{m_watch, POLLIN, 0};
        if (poll(&waited, 1, static_cast<int>(milliseconds(patience))) != 1)
            throw std::runtime_error("no file came");
        return Clock::now();
    }

private:
    int m_watch;
};

void drag(Input& input, Points::Point from, Points::Point to)
{
    constexpr int steps = 8;
    input.movePointer(from.x, from.y);
    input.setButton(true);
    for (int i = 1; i <= steps; ++i) {
        input.movePointer(from.x + (to.x - from.x) * i / steps,
                          from.y + (to.y - from.y) * i / steps);
    }
}

} // namespace

int main(int argc, char** argv)
try {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() != 4)
        throw std::runtime_error("usage: bench_confirm FOLDER OUTPUT X1,Y1 X2,Y2");
    const auto ends = Points::read({words[2], words[3]});
    const Connection connection;
    Input input(connection);
    const Connection clipboardConnection;
    Selection clipboard(clipboardConnection);
    const Points points(connection, ends);
    const Points::Colours before = points.colours();
    const NewName newName(words[0]);

    pressHotKey(input);
    points.awaitOtherThan(before);
    drag(input, ends[0], ends[1]);
    connection.finish();

    const auto released = input.setButton(false);
    auto named = std::async(std::launch::async, [&newName] { return newName.await(); });
    auto pasted = std::async(std::launch::async, [&clipboard, &words] {
        const auto owned = clipboard.awaitNewOwner();
        const auto bytes = clipboard.fetch("image/png");
        const auto read = Clock::now();
        std::ofstream(words[1], std::ios::binary)
            .write(static_cast<const char*>(static_cast<const void*>(bytes.data())),
                   static_cast<std::streamsize>(bytes.size()));
        return std::pair(owned, read);
    });
    const auto gone = points.await(before);
    const auto [owned, read] = pasted.get();
    std::printf("%.3f %.3f %.3f %.3f\n", milliseconds(gone - released),
                milliseconds(named.get() - released), milliseconds(owned - released),
                milliseconds(read - released));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "bench_confirm: %s\n", error.what());
    return 1;
}
