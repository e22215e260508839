"""A flattened copy of a 4K picture with 200 annotations, against Qt saving the same pixels."""

import os
import statistics
import subprocess

from desktops import ROOT, Failed, probe
from figures import median_and_spread, ratio, table

CONTENTS = ["mixed", "terminal", "photograph"]


def measure(content, rounds):
    """For each round: milliseconds of drawing, flattening, saving; bytes of the flattened file and the saved one."""
    ended = subprocess.run(
        [probe("flatten"), str(ROOT / "bench" / "data"), content, str(rounds + 1)],
        env={**os.environ, "QT_QPA_PLATFORM": "offscreen"}, capture_output=True, text=True, check=False)
    if ended.returncode != 0:
        raise Failed(f"flattening failed: {ended.stderr}")
    # The first round reads the fonts.
    return [[float(figure) for figure in line.split()] for line in ended.stdout.splitlines()][1:]


def run(report):
    rows = []
    for content in CONTENTS:
        drawing, flattening, saving, ours, theirs = zip(*measure(content, 2 if report.is_quick else 7))
        rows.append([content, median_and_spread(drawing), median_and_spread(flattening),
                     median_and_spread(saving), f"{ratio(flattening, saving):.2f}",
                     f"{ours[0] / 1000:.0f}", f"{statistics.median(ours) / statistics.median(theirs):.2f}"])
    report.say("## 3840 x 2160, 200 annotations\n")
    report.say(table(["content", "ms: drawing alone", "ms: flattened PNG", "ms: QImage::save",
                      "flattened / save", "KB", "size / save"], rows))
    report.say()
