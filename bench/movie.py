"""Movies of a whole screen: processor time, lost frames and how soon the file is finished, against ffmpeg."""

import os
import signal
import statistics
import subprocess
import time

from desktops import BUILD, Desktop, Failed, probe
from figures import median_and_spread, ratio, table

TOOL = str(BUILD / "libexec" / "tamrik" / "screencapture")
WIDTH, HEIGHT = 1920, 1080
THEIR_RATE = 30
SCROLL = ("i=0; while :; do i=$((i+1)); "
          "echo \"$i $RANDOM a line of text as compilers print them $RANDOM $RANDOM $RANDOM\"; "
          "sleep 0.066; done")
SCENES = {
    "still desktop": None,
    "terminal, 15 lines a second": ["xterm", "-geometry", "300x100+0+0", "-fa", "DejaVu Sans Mono",
                                    "-fs", "9", "-e", "bash", "-c", SCROLL],
    f"full motion, {THEIR_RATE} frames a second": [probe("motion"), str(THEIR_RATE)],
}


def commands(folder, display):
    """Each program's command line, the same settings of the same encoder in both, and its file."""
    ours, theirs = folder / "ours.mov", folder / "theirs.mov"
    return {
        "screencapture": ([TOOL, "-v", "-x", "-C", "-R", f"0,0,{WIDTH},{HEIGHT}", str(ours)], ours),
        "ffmpeg -f x11grab": (
            ["ffmpeg", "-v", "error", "-y", "-f", "x11grab", "-framerate", str(THEIR_RATE),
             "-video_size", f"{WIDTH}x{HEIGHT}", "-i", display, "-c:v", "libx264",
             "-preset", "superfast", "-tune", "zerolatency", "-crf", "18", "-g", str(THEIR_RATE),
             "-pix_fmt", "yuv420p", str(theirs)], theirs),
    }


def film(desktop, command, seconds):
    """Processor seconds for each second of filming, and seconds from SIGINT to the end."""
    before = time.monotonic()
    process = subprocess.Popen(command, env=desktop.environment, cwd=desktop.home,
                               stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    time.sleep(seconds)
    asked = time.monotonic()
    process.send_signal(signal.SIGINT)
    _, status, usage = os.wait4(process.pid, 0)
    ended = time.monotonic()
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode not in (0, 255):  # ffmpeg's answer to SIGINT
        raise Failed(f"{command[0]} ended with {process.returncode}")
    return (usage.ru_utime + usage.ru_stime) / (ended - before), ended - asked


def duration(file):
    shown = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of",
                            "csv=p=0", str(file)], capture_output=True, text=True, check=True)
    return float(shown.stdout)


def lost_frames(file):
    """Of the numbers that bench_motion wrote between the first and the last seen, those missing."""
    gray = subprocess.run(
        ["ffmpeg", "-v", "error", "-i", str(file), "-vf", "crop=640:40:0:0,scale=16:1:flags=area",
         "-f", "rawvideo", "-pix_fmt", "gray", "-fps_mode", "passthrough", "-enc_time_base", "1:90000",
         "-"], capture_output=True, check=True).stdout
    numbers = {sum((value > 128) << bit for bit, value in enumerate(gray[at:at + 16]))
               for at in range(0, len(gray), 16)}
    return max(numbers) - min(numbers) + 1 - len(numbers)


def measure(report, desktop, scene, rounds, seconds):
    programs = commands(desktop.home, desktop.environment["DISPLAY"])
    used = {name: [] for name in programs}
    ends = {name: [] for name in programs}
    lost = {name: [] for name in programs}
    for turn in range(rounds + 1):
        for name, (command, file) in programs.items():
            cost, end = film(desktop, command, seconds)
            if abs(duration(file) - seconds) > 0.5:
                report.problem(f"{name}'s movie has {duration(file)} seconds, not {seconds}")
            if turn == 0:  # reads the programs from the disk
                continue
            used[name].append(cost)
            ends[name].append(1000 * end)
            if "motion" in scene:
                lost[name].append(lost_frames(file))
    report.say(f"## {scene}\n")
    report.say(table(
        ["program", "CPU s a second: median [quartiles]", "ours / theirs", "ms to the end",
         "frames lost", "KB"],
        [[name, median_and_spread(used[name], 3), f"{ratio(used['screencapture'], used[name]):.2f}",
          median_and_spread(ends[name]),
          f"{statistics.mean(lost[name]):.1f} of {seconds * THEIR_RATE}" if lost[name] else "",
          f"{file.stat().st_size / 1000:.0f}"] for name, (_, file) in programs.items()]))
    report.say()


def run(report):
    rounds, seconds = (1, 3) if report.is_quick else (5, 8)
    for scene, command in SCENES.items():
        with Desktop("--size", f"{WIDTH}x{HEIGHT}", "--wm", "none", "--compositor", "none",
                     "--tray", "none") as desktop:
            if not command:
                measure(report, desktop, scene, rounds, seconds)
                continue
            with desktop.start(*command):
                time.sleep(1)  # its window is there, and the first lines in it
                measure(report, desktop, scene, rounds, seconds)
