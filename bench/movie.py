"""Movies of a whole screen: processor time, lost frames and how soon the file is finished, against
programs that people film a screen with otherwise."""

import statistics
import subprocess
import time

import recorders
from desktops import Desktop, probe
from figures import median_and_spread, ratio, table

OURS = "screencapture"
SCROLL = ("i=0; while :; do i=$((i+1)); "
          "echo \"$i $RANDOM a line of text as compilers print them $RANDOM $RANDOM $RANDOM\"; "
          "sleep 0.066; done")
TERMINAL = ["xterm", "-geometry", "300x100+0+0", "-fa", "DejaVu Sans Mono", "-fs", "9", "-e", "bash",
            "-c", SCROLL]
HD, UHD = (1920, 1080), (3840, 2160)


class Scene:
    """What is on the screen, of what size, and how many frames a second the others are to take."""

    def __init__(self, what, size, rate=30):
        self.what, self.size, self.rate = what, size, rate
        self.has_numbers = what == "full motion"
        self.command = {"still desktop": None, "terminal, 15 lines a second": TERMINAL,
                        "full motion": [probe("motion"), str(rate)]}[what]

    def __str__(self):
        return f"{self.what}, {self.size[0]} x {self.size[1]}, {self.rate} frames a second"


SCENES = [
    Scene("still desktop", HD),
    Scene("terminal, 15 lines a second", HD),
    Scene("full motion", HD),
    Scene("still desktop", HD, 60),
    Scene("terminal, 15 lines a second", HD, 60),
    Scene("full motion", HD, 60),
    Scene("still desktop", UHD),
    Scene("terminal, 15 lines a second", UHD),
    Scene("full motion", UHD),
]


def duration(file):
    shown = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of",
                            "csv=p=0", str(file)], capture_output=True, text=True, check=True)
    return float(shown.stdout)


def numbers_in(file):
    """Of the numbers that bench_motion wrote, those between the first and the last seen: how many
    there were, and how many are missing."""
    gray = subprocess.run(
        ["ffmpeg", "-v", "error", "-i", str(file), "-vf", "crop=640:40:0:0,scale=16:1:flags=area",
         "-f", "rawvideo", "-pix_fmt", "gray", "-fps_mode", "passthrough", "-enc_time_base", "1:90000",
         "-"], capture_output=True, check=True).stdout
    numbers = {sum((value > 128) << bit for bit, value in enumerate(gray[at:at + 16]))
               for at in range(0, len(gray), 16)}
    there = max(numbers) - min(numbers) + 1
    return there, there - len(numbers)


def measure(report, desktop, scene, rounds, seconds):
    films = {name: [] for name in recorders.ALL}
    numbers = {name: [] for name in recorders.ALL}
    for turn in range(rounds + 1):
        for name, recorder in recorders.ALL.items():
            film = recorder(desktop, scene.size, scene.rate, seconds)
            film.duration = duration(film.file)
            if name == OURS and abs(film.duration - seconds) > 0.5:
                report.problem(f"{name}'s movie has {film.duration} seconds, not {seconds}")
            if turn == 0:  # reads the programs from the disk
                continue
            films[name].append(film)
            if scene.has_numbers:
                numbers[name].append(numbers_in(film.file))

    def costs(name):
        return [film.cost for film in films[name]]

    def lost(name):
        if not numbers[name]:
            return ""
        there, missing = (statistics.mean(column) for column in zip(*numbers[name]))
        return f"{missing:.1f} of {there:.0f}"

    report.say(f"## {scene}\n")
    report.say(table(
        ["program", "CPU s a second: median [quartiles]", "ours / theirs", "ms to the end",
         "frames lost", f"s in the file, of {seconds}", "KB"],
        [[name, median_and_spread(costs(name), 3), f"{ratio(costs(OURS), costs(name)):.2f}",
          median_and_spread([1000 * film.end for film in films[name]]), lost(name),
          f"{statistics.mean(film.duration for film in films[name]):.1f}",
          f"{films[name][-1].file.stat().st_size / 1000:.0f}"] for name in recorders.ALL]))
    report.say()


def run(report):
    for scene in SCENES:
        if report.is_quick and scene.size == UHD:
            continue
        # The largest screens take long to paint and to encode, not only to film.
        rounds, seconds = (1, 3) if report.is_quick else (3, 6) if scene.size == UHD else (5, 8)
        with Desktop("--size", f"{scene.size[0]}x{scene.size[1]}", "--wm", "none", "--compositor",
                     "none", "--tray", "none") as desktop:
            if not scene.command:
                measure(report, desktop, scene, rounds, seconds)
                continue
            with desktop.start(*scene.command):
                time.sleep(1)  # its window is there, and the first lines in it
                measure(report, desktop, scene, rounds, seconds)
