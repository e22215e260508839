"""From Stop to the MP4: a recording in one piece against ffmpeg's copy, one with a pause by how much faster than
it was filmed, and what that costs in quality."""

import os
import pathlib
import re
import resource
import signal
import subprocess
import tempfile
import time

from desktops import BUILD, Desktop, Failed, probe
from figures import median_and_spread, ratio, table

TOOL = str(BUILD / "libexec" / "tamrik" / "screencapture")
WIDTH, HEIGHT = 1920, 1080
RATE = 30
SCROLL = ("i=0; while :; do i=$((i+1)); "
          "echo \"$i $RANDOM a line of text as compilers print them $RANDOM $RANDOM $RANDOM\"; "
          f"sleep {1 / RATE - 0.001:.3f}; done")
SCENES = {
    f"terminal, {RATE} lines a second": ["xterm", "-geometry", "300x100+0+0", "-fa", "DejaVu Sans Mono",
                                         "-fs", "9", "-e", "bash", "-c", SCROLL],
    f"full motion, {RATE} frames a second": [probe("motion"), str(RATE)],
}


def film(scene, file, seconds):
    """One segment, as the program has it filmed."""
    with Desktop("--size", f"{WIDTH}x{HEIGHT}", "--wm", "none", "--compositor", "none", "--tray",
                 "none") as desktop, desktop.start(*scene):
        time.sleep(1)  # its window is there, and the first lines in it
        tool = subprocess.Popen([TOOL, "-v", "-x", "-C", "-R", f"0,0,{WIDTH},{HEIGHT}", str(file)],
                                env=desktop.environment, stdin=subprocess.DEVNULL)
        time.sleep(seconds)
        tool.send_signal(signal.SIGINT)
        if tool.wait() != 0:
            raise Failed(f"the capture tool ended with {tool.returncode}")


def ffmpeg(*words):
    run = subprocess.run(["ffmpeg", "-nostdin", "-hide_banner", "-y", *map(str, words)],
                         stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
    if run.returncode != 0:
        raise Failed(f"ffmpeg: {run.stderr.strip()}")
    return run.stderr


def timed(command):
    """Seconds, and processor seconds."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    begin = time.monotonic()
    subprocess.run(list(map(str, command)), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   check=True)
    wall = time.monotonic() - begin
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return wall, (after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)


def duration(file):
    shown = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of",
                            "csv=p=0", str(file)], capture_output=True, text=True, check=True)
    return float(shown.stdout)


def likeness(joined, segment):
    """SSIM and PSNR of the brightness, frame by frame, over the first segment's frames."""
    shown = ffmpeg("-i", joined, "-i", segment, "-filter_complex",
                   "[0:v]setpts=N,split[a][b];[1:v]setpts=N,split[c][d];"
                   "[a][c]ssim=shortest=1;[b][d]psnr=shortest=1",
                   "-fps_mode", "passthrough", "-f", "null", "-")
    return (float(re.search(r"SSIM Y:([\d.]+)", shown).group(1)),
            float(re.search(r"PSNR y:([\d.]+)", shown).group(1)))


def in_one_piece(report, folder, segment, repeats, rounds):
    """A long segment with sound, made of a short one, is what the tool would have written."""
    long = folder / "long.mov"
    ffmpeg("-stream_loop", repeats - 1, "-i", segment, "-f", "lavfi", "-i", "sine=r=48000",
           "-map", "0:v", "-map", "1:a", "-c:v", "copy", "-c:a", "aac", "-shortest", "-movflags",
           "frag_keyframe+empty_moov+default_base_moof", "-frag_duration", "500000", long)
    ours, theirs = folder / "ours.mp4", folder / "theirs.mp4"
    commands = {
        "Tamrik": [probe("export"), ours, long],
        "ffmpeg -c copy": ["ffmpeg", "-nostdin", "-v", "error", "-y", "-i", long, "-c", "copy",
                           "-movflags", "+faststart", theirs],
        "the same, then sync": ["sh", "-c", 'f=$1; shift; "$@" && sync "$f"', "sh", theirs, "ffmpeg",
                                "-nostdin", "-v", "error", "-y", "-i", long, "-c", "copy", "-movflags",
                                "+faststart", theirs],
    }
    seconds = {name: [] for name in commands}
    for turn in range(rounds + 1):
        for name, command in commands.items():
            # What others have written is not waited for here.
            os.sync()
            wall, _ = timed(command)
            if turn > 0:  # the first reads the programs from the disk
                seconds[name].append(wall)
    for file in (ours, theirs):
        if abs(duration(file) - duration(long)) > 0.1:
            report.problem(f"{file.name} has {duration(file)} seconds, not {duration(long)}")
    report.say(f"In one piece: {duration(long):.0f} s, {long.stat().st_size / 1e6:.0f} MB, with sound\n")
    report.say(table(["program", "s: median [quartiles]", "ours / theirs"],
                     [[name, median_and_spread(values, 2), f"{ratio(seconds['Tamrik'], values):.2f}"]
                      for name, values in seconds.items()]))
    report.say()


def with_a_pause(report, folder, segment, rounds):
    joined = folder / "joined.mp4"
    walls, costs = [], []
    for _ in range(rounds):
        wall, cost = timed([probe("export"), joined, segment, segment])
        walls.append(2 * duration(segment) / wall)
        costs.append(2 * duration(segment) / cost)
    if abs(duration(joined) - 2 * duration(segment)) > 0.1:
        report.problem(f"{joined.name} has {duration(joined)} seconds")
    ssim, psnr = likeness(joined, segment)
    cores = len(os.sched_getaffinity(0))
    report.say(f"Joined: two segments of {duration(segment):.0f} s, {cores} cores\n")
    report.say(table(
        ["", "times as fast as filmed", "with all cores to itself", "SSIM", "PSNR (dB)",
         "MB, of segments", "MB, joined"],
        [["Tamrik", median_and_spread(walls), f"{cores * sorted(costs)[len(costs) // 2]:.1f}",
          f"{ssim:.4f}", f"{psnr:.1f}", f"{2 * segment.stat().st_size / 1e6:.1f}",
          f"{joined.stat().st_size / 1e6:.1f}"]]))
    report.say()


def run(report):
    rounds, seconds, repeats = (1, 5, 6) if report.is_quick else (5, 30, 20)
    for name, scene in SCENES.items():
        report.say(f"## {name}\n")
        with tempfile.TemporaryDirectory(prefix="tamrik-bench-", dir=os.environ.get("TMPDIR", "/var/tmp")) as path:
            folder = pathlib.Path(path)
            segment = folder / "segment.mov"
            film(scene, segment, seconds)
            in_one_piece(report, folder, segment, repeats, rounds)
            with_a_pause(report, folder, segment, rounds)
