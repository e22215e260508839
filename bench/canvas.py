"""Steps of drags on the editor's canvas of a 4K picture with many annotations, against painting all of them."""

import os
import statistics
import subprocess

from desktops import Failed, probe
from figures import median_and_spread, table

COUNTS = [100, 1000, 10000]


def measure(count, rounds):
    """The drags' names, in order, and for each its rounds: first step, median of the later ones, the 95th of
    100 of these, letting go, undoing, and painting everything plainly, all in milliseconds."""
    ended = subprocess.run(
        [probe("canvas"), str(count), str(rounds)],
        env={**os.environ, "QT_QPA_PLATFORM": "offscreen"}, capture_output=True, text=True, check=False)
    if ended.returncode != 0:
        raise Failed(f"dragging failed: {ended.stderr}")
    drags = {}
    for line in ended.stdout.splitlines():
        name, *figures = line.split()
        drags.setdefault(name, []).append([float(figure) for figure in figures])
    return drags


def run(report):
    for count in [100] if report.is_quick else COUNTS:
        rows = []
        for name, rounds in measure(count, 1 if report.is_quick else 3).items():
            first, later, long, release, undo, plain = zip(*rounds)
            ratio = statistics.median(step / all_of_it for step, all_of_it in zip(later, plain))
            rows.append([name, median_and_spread(first, 2), median_and_spread(later, 2), median_and_spread(long, 2),
                         median_and_spread(release), median_and_spread(undo), median_and_spread(plain),
                         f"{ratio:.4f}"])
        report.say(f"## 3840 x 2160, {count} annotations, milliseconds\n")
        report.say(table(["drag", "first step", "later steps", "95 of 100 under", "letting go", "undo",
                          "all painted plainly", "later / plainly"], rows))
        report.say()
