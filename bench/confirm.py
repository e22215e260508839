"""Letting go of the mouse to a picture on the clipboard, step by step."""

import statistics
import subprocess

from desktops import TAMRIK, Desktop, probe
from figures import median_and_spread, table

WAIT = 180  # milliseconds that the program waits so that its overlay can vanish


def check(report, desktop, pasted, size):
    """What was pasted is the file, and the file has the size of the selection."""
    files = sorted((desktop.home / "Pictures" / "Tamrik").iterdir(), key=lambda file: file.stat().st_mtime)
    if not files or files[-1].read_bytes() != pasted.read_bytes():
        report.problem("the clipboard held another picture than the file")
    identified = subprocess.run(["identify", "-format", "%w %h", str(pasted)], capture_output=True, check=False)
    if identified.stdout.decode() != f"{size[0]} {size[1]}":
        report.problem(f"the picture is {identified.stdout.decode()}, not {size[0]} {size[1]}")


def measure(report, size, compositor, rounds):
    width, height = size
    steps = []
    with Desktop("--size", f"{width}x{height}", "--compositor", compositor, "--tray", "none") as desktop:
        desktop.run(probe("paint"), "mixed")
        folder = desktop.home / "Pictures" / "Tamrik"
        folder.mkdir(parents=True)
        pasted = desktop.home / "pasted.png"
        with desktop.start(TAMRIK) as program:
            for _ in range(rounds):
                program.await_calm()
                words = desktop.run(probe("confirm"), str(folder), str(pasted), "0,0",
                                    f"{width - 1},{height - 1}").split()
                steps.append([float(word) for word in words])
                check(report, desktop, pasted, size)
    gone, named, owned, read = zip(*steps)
    parts = {
        "the overlay is gone (within the wait)": gone,
        f"wait of {WAIT} ms": [WAIT] * len(steps),
        "capture tool: its start to the named file": [n - WAIT for n in named],
        "noticing, reading, taking the clipboard": [o - n for o, n in zip(owned, named)],
        "handing the picture over": [r - o for r, o in zip(read, owned)],
        "all: released to the last byte pasted": read,
        "all less the wait": [r - WAIT for r in read],
    }
    report.say(f"## {width} x {height}, {'compositor' if compositor != 'none' else 'no compositor'}\n")
    report.say(table(["step", "ms: median [quartiles]", "most"],
                     [[name, median_and_spread(values), f"{max(values):.1f}"]
                      for name, values in parts.items()]))
    report.say(f"\nbeyond the wait: {statistics.median(read) - WAIT:.0f} ms\n")


def run(report):
    for size in [(1920, 1080)] if report.is_quick else [(1920, 1080), (3840, 2160)]:
        for compositor in ("picom", "none"):
            measure(report, size, compositor, 2 if report.is_quick else 12)
