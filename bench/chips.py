"""Chips: how soon one is there, and what five of them keep in memory."""

import pathlib
import subprocess
import tempfile

from desktops import TAMRIK, Desktop, Failed, probe
from figures import table

VIDEO_SECONDS = 600


def make_video(path, seconds):
    run = subprocess.run(
        ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"testsrc2=size=1920x1080:rate=30:duration={seconds}",
         "-c:v", "libx264", "-preset", "ultrafast", "-g", "30", "-bf", "0", "-pix_fmt", "yuv420p",
         "-movflags", "+faststart", str(path)], stderr=subprocess.PIPE, check=False)
    if run.returncode != 0:
        raise Failed(f"ffmpeg: {run.stderr.decode()}")


def compare(desktop, rounds, file):
    ours, theirs = (float(word) for word in desktop.run(probe("thumbnail"), str(rounds), str(file)).split())
    return [f"{ours:.1f}", f"{theirs:.1f}", f"{ours / theirs:.2f}"]


def capture(desktop, folder, size):
    desktop.run(probe("confirm"), str(folder), str(desktop.home / "pasted.png"), "0,0",
                f"{size[0] - 1},{size[1] - 1}")
    return max(folder.iterdir(), key=lambda file: file.stat().st_mtime)


def run(report):
    size = (1920, 1080) if report.is_quick else (3840, 2160)
    seconds = 5 if report.is_quick else VIDEO_SECONDS
    rounds = 3 if report.is_quick else 15
    readings, memory = [], []
    with Desktop("--size", f"{size[0]}x{size[1]}", "--tray", "none") as desktop, \
            tempfile.TemporaryDirectory() as videos:
        desktop.run(probe("paint"), "mixed")
        folder = desktop.home / "Pictures" / "Tamrik"
        folder.mkdir(parents=True)
        with desktop.start(TAMRIK) as program:
            program.await_calm()
            memory.append(program.memory())
            for _ in range(5):
                picture = capture(desktop, folder, size)
                program.await_calm(2.5)  # the badge goes, too
                memory.append(program.memory())
        readings.append([f"picture of {size[0]} x {size[1]}, beside QImage",
                         *compare(desktop, rounds, picture)])
        video = pathlib.Path(videos, "video.mp4")
        make_video(video, seconds)
        readings.append([f"{seconds} s of 1920 x 1080, beside the ffmpeg program",
                         *compare(desktop, rounds, video)])
    report.say("## from the file to what a chip shows\n")
    report.say(table(["file", "ours ms", "theirs ms", "ours / theirs"], readings))
    report.say(f"\n## memory with chips of {size[0]} x {size[1]}\n")
    report.say(table(["chips", "RSS MB", "PSS MB", "anonymous MB"],
                     [[str(count), *(f"{found[kind]:.1f}" for kind in found)]
                      for count, found in enumerate(memory)]))
    report.say()
