// How long after the hot key the screen shows something new at some points.
//
// usage: bench_overlay escape|hotkey X,Y...
//
// Presses Alt+Shift+S, waits until every point has changed, prints the milliseconds between, ends
// what came by Escape or by the hot key, and waits until the points look as before.

#include "probes/Input.h"
#include "probes/Points.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv)
try {
    using namespace Bench;
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() < 2 || (words[0] != "escape" && words[0] != "hotkey"))
        throw std::runtime_error("usage: bench_overlay escape|hotkey X,Y...");
    const Connection connection;
    Input input(connection);
    const Points points(connection, Points::read({words.begin() + 1, words.end()}));
    const Points::Colours before = points.colours();

    const auto pressed = pressHotKey(input);
    const auto seen = points.awaitOtherThan(before);
    std::printf("%.3f\n", milliseconds(seen - pressed));

    if (words[0] == "escape")
        pressEscape(input);
    else
        pressHotKey(input);
    points.await(before);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "bench_overlay: %s\n", error.what());
    return 1;
}
