"""The video editor on ten minutes of a screen: opening to the first frame, a handle's move to the frame under
it, against a program that is started to read one frame."""

import pathlib
import statistics
import subprocess
import tempfile
import time

from desktops import Desktop, probe
from figures import median_and_spread, table
from finish import HEIGHT, SCENES, WIDTH, film

MINUTES = 10


def lengthen(segment, file, seconds):
    """Ten minutes of what was filmed in a few seconds."""
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", "-stream_loop", str(60 * MINUTES // seconds), "-i",
                    str(segment), "-c", "copy", "-t", str(60 * MINUTES), "-movflags", "+faststart", str(file)],
                   check=True)


def reading_one_frame(file, at):
    """Milliseconds of the ffmpeg program, from its start to its end."""
    before = time.monotonic()
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-ss", str(at), "-i", str(file), "-frames:v", "1", "-f",
                    "null", "-"], check=True)
    return 1000 * (time.monotonic() - before)


def measure(report, scene, command, rounds, seconds):
    with tempfile.TemporaryDirectory(dir="/var/tmp") as name:
        folder = pathlib.Path(name)
        film(command, folder / "segment.mov", seconds)
        lengthen(folder / "segment.mov", folder / "long.mp4", seconds)
        first, further, moves, most, theirs, theirs_far = [], [], [], [], [], []
        with Desktop("--size", f"{WIDTH}x{HEIGHT}", "--compositor", "none", "--tray", "none") as desktop:
            for turn in range(rounds):
                words = desktop.run(probe("player"), "3", str(folder / "long.mp4")).split()
                for values, word in zip((first, further, moves, most), words):
                    values.append(float(word))
                theirs.append(reading_one_frame(folder / "long.mp4", 0))
                theirs_far.append(reading_one_frame(folder / "long.mp4", 100.3 + 37 * turn))
        size = (folder / "long.mp4").stat().st_size
    report.say(f"## {MINUTES} minutes of {WIDTH} x {HEIGHT}: {scene}, {size / 1e6:.0f} MB\n")
    report.say(table(["what", "ms: median [quartiles]"], [
        ["the first opening in a process, to its first frame", median_and_spread(first)],
        ["a further opening", median_and_spread(further)],
        ["ffmpeg reads the first frame", median_and_spread(theirs)],
        ["a handle's move to the frame there", median_and_spread(moves)],
        ["the slowest of 40", median_and_spread(most)],
        ["ffmpeg reads a frame in the middle", median_and_spread(theirs_far)],
    ]))
    report.say()
    if statistics.median(first) <= 0:
        report.problem("nothing was measured")


def run(report):
    rounds, seconds = (1, 3) if report.is_quick else (5, 10)
    for scene, command in list(SCENES.items())[:1] if report.is_quick else SCENES.items():
        measure(report, scene, command, rounds, seconds)
