"""Pictures of a whole screen: process start to file, and the file's size, against other programs."""

import os
import statistics
import subprocess
import time

from desktops import BUILD, Desktop, Failed, probe
from figures import median_and_spread, ratio, table

TOOL = str(BUILD / "libexec" / "tamrik" / "screencapture")
CONTENTS = ["mixed", "terminal", "photograph"]


def commands(size, folder):
    """Each program's command line, and the file that it is to leave."""
    width, height = size
    ours, maim, scrot, imported, flameshot = (
        folder / f"{name}.png" for name in ("ours", "maim", "scrot", "import", "flameshot"))
    return {
        "screencapture": ([TOOL, "-x", "-t", "png", "-R", f"0,0,{width},{height}", str(ours)], ours),
        "maim": (["maim", "--hidecursor", str(maim)], maim),
        "scrot": (["scrot", "--overwrite", str(scrot)], scrot),
        "import": (["import", "-silent", "-window", "root", str(imported)], imported),
        # Starts, takes the picture and ends; no other copy of it runs.
        "flameshot": (["flameshot", "full", "--path", str(flameshot)], flameshot),
    }


def take(desktop, command, file):
    """Seconds from the start of the program until it has ended and the file is there."""
    file.unlink(missing_ok=True)
    before = time.monotonic()
    desktop.run(*command, output=subprocess.DEVNULL)
    seconds = time.monotonic() - before
    if not file.exists():
        raise Failed(f"{command[0]} left no file")
    return seconds


def pixels(file):
    """The picture's size and its pixels, three bytes each."""
    size = subprocess.run(["identify", "-format", "%w %h", str(file)], capture_output=True, check=True)
    rgb = subprocess.run(["convert", str(file), "-depth", "8", "rgb:-"], capture_output=True, check=True)
    return tuple(map(int, size.stdout.split())), rgb.stdout


def check_pictures(report, size, files):
    """All of the right size, and ours pixel by pixel what maim got."""
    seen = {name: pixels(file) for name, file in files.items()}
    for name, (their_size, _) in seen.items():
        if their_size != size:
            report.problem(f"{name}'s picture has {their_size} pixels, not {size}")
    if seen["screencapture"][1] != seen["maim"][1]:
        report.problem("screencapture's pixels are not those that maim got")


def measure(report, desktop, size, content, rounds):
    desktop.run(probe("paint"), content)
    folder = desktop.home / "stills"
    folder.mkdir(exist_ok=True)
    programs = commands(size, folder)
    seconds = {name: [] for name in programs}
    for turn in range(rounds + 1):
        for name, (command, file) in programs.items():
            taken = take(desktop, command, file)
            if turn > 0:  # the first reads the programs from the disk
                seconds[name].append(taken)
    check_pictures(report, size, {name: file for name, (_, file) in programs.items()})

    bytes_of = {name: file.stat().st_size for name, (_, file) in programs.items()}
    peers = [name for name in programs if name != "screencapture"]
    fastest = min(peers, key=lambda name: statistics.median(seconds[name]))
    smallest = min(peers, key=lambda name: bytes_of[name])
    report.say(f"## {size[0]} x {size[1]}, {content}\n")
    report.say(table(
        ["program", "ms: median [quartiles]", "ours / theirs", "KB", "ours / theirs"],
        [[name, median_and_spread([1000 * s for s in seconds[name]]),
          f"{ratio(seconds['screencapture'], seconds[name]):.2f}", f"{bytes_of[name] / 1000:.0f}",
          f"{bytes_of['screencapture'] / bytes_of[name]:.2f}"] for name in programs]))
    report.say(f"\nagainst the fastest ({fastest}): "
               f"{ratio(seconds['screencapture'], seconds[fastest]):.2f} of its time; "
               f"against the smallest ({smallest}): "
               f"{bytes_of['screencapture'] / bytes_of[smallest]:.2f} of its size\n")


def run(report):
    # One core for the programs, so that none is helped by an idle one; the X server may take either.
    cores = os.sched_getaffinity(0)
    sizes = [(1920, 1080)] if report.is_quick else [(1920, 1080), (3840, 2160)]
    for size in sizes:
        options = ["--size", f"{size[0]}x{size[1]}", "--wm", "none", "--compositor", "none",
                   "--tray", "none"]
        # The slowest of them takes ten seconds for a large photograph.
        rounds = 2 if report.is_quick else 15 if size[0] < 2000 else 5
        with Desktop(*options) as desktop:
            os.sched_setaffinity(0, {max(cores)})
            try:
                for content in CONTENTS:
                    measure(report, desktop, size, content, rounds)
            finally:
                os.sched_setaffinity(0, cores)
