"""Hot key to first picture on the screen: the overlay against empty windows of Qt's."""

import contextlib
from dataclasses import dataclass

from desktops import TAMRIK, Desktop, probe
from figures import median_and_spread, ratio, table


@dataclass(frozen=True)
class Screens:
    size: tuple
    second: tuple = None  # stands right of the first

    def options(self):
        options = ["--size", f"{self.size[0]}x{self.size[1]}"]
        if self.second:
            options += ["--screens", "2", "--second-size", f"{self.second[0]}x{self.second[1]}"]
        return options

    def points(self):
        """In the corners of each screen and in its middle; at the bottom above the panel."""
        points, left = [], 0
        for width, height in filter(None, [self.size, self.second]):
            points += [f"{left + x},{y}" for x in (3, width - 4) for y in (3, height - 60)]
            points.append(f"{left + width // 2},{height // 2}")
            left += width
        return points

    def middle(self):
        return [f"{self.size[0] // 2},{self.size[1] // 2}"]

    def __str__(self):
        return " + ".join(f"{width} x {height}" for width, height in filter(None, [self.size, self.second]))


def programs(screens):
    """Each with how it is started, what takes away what it shows, and where to look."""
    empty = probe("empty_window")
    known = {
        "overlay": ([TAMRIK], "escape", screens.points()),
        "empty window, covers the screen": ([empty, "bypass"], "hotkey", screens.points()),
    }
    if not screens.second:
        known["empty window, full-screen by the window manager"] = (
            [empty, "fullscreen"], "hotkey", screens.points())
        known["empty window, 800 x 600"] = ([empty, "ordinary"], "hotkey", screens.middle())
    return known


def measure(report, screens, compositor, rounds, later_uses):
    known = programs(screens)
    first, later = {name: [] for name in known}, {name: [] for name in known}
    with contextlib.ExitStack() as stack:
        desktops = {name: stack.enter_context(
            Desktop(*screens.options(), "--compositor", compositor)) for name in known}
        for _ in range(rounds):
            for name, (command, ending, points) in known.items():
                desktop = desktops[name]
                with desktop.start(*command) as program:
                    for use in range(1 + later_uses):
                        program.await_calm(0.1 if use else 0.4)
                        milliseconds = float(desktop.run(probe("overlay"), ending, *points))
                        (later if use else first)[name].append(milliseconds)
    report.say(f"## {screens}, {'compositor' if compositor != 'none' else 'no compositor'}\n")
    report.say(table(
        ["ms to the first picture: median [quartiles]", "first use", "ours / theirs", "later uses",
         "ours / theirs"],
        [[name, median_and_spread(first[name]), f"{ratio(first['overlay'], first[name]):.2f}",
          median_and_spread(later[name]), f"{ratio(later['overlay'], later[name]):.2f}"]
         for name in known]))
    report.say()


def run(report):
    small, large, beside = (1920, 1080), (3840, 2160), (1280, 1024)
    setups = [Screens(small)] if report.is_quick else [
        Screens(small), Screens(large), Screens(small, beside), Screens(large, beside)]
    for screens in setups:
        for compositor in ("picom", "none"):
            measure(report, screens, compositor, *((1, 2) if report.is_quick else (5, 2)))
