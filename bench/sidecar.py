"""Keeping annotations after a change: what the editor waits, and when the file is there."""

import subprocess
import tempfile

from desktops import Failed, probe
from figures import median_and_spread, table

POINTS = [1_000, 10_000, 100_000]


def measure(points, rounds):
    """For each round: milliseconds of handing over, until the file is there, of the next change, of
    writing in the foreground; bytes."""
    with tempfile.TemporaryDirectory() as folder:
        ended = subprocess.run([probe("sidecar"), folder, str(points), str(rounds)],
                               capture_output=True, text=True, check=False)
    if ended.returncode != 0:
        raise Failed(f"saving failed: {ended.stderr}")
    return [[float(figure) for figure in line.split()] for line in ended.stdout.splitlines()]


def run(report):
    rows = []
    for points in POINTS:
        handing, written, changing, foreground, size = zip(*measure(points, 3 if report.is_quick else 30))
        rows.append([f"{points:,}", median_and_spread(handing, 3), f"{max(handing):.3f}",
                     median_and_spread(changing, 3), median_and_spread(written, 1),
                     median_and_spread(foreground, 1), f"{size[0] / 1000:.0f}"])
    report.say("## One stroke\n")
    report.say(table(["points", "ms: the editor waits", "longest", "ms: the next change",
                      "ms: until the file is there", "ms: in the foreground", "KB"], rows))
    report.say()
