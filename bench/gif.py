"""GIFs of films: time, size and likeness against other programs' of the same frames; how long 240 frames out of ten
minutes take against decoding all of it; memory."""

import os
import pathlib
import re
import shlex
import signal
import statistics
import subprocess
import tempfile
import time

from desktops import BUILD, Desktop, Failed, probe
from figures import table

TOOL = str(BUILD / "libexec" / "tamrik" / "screencapture")
WIDTH, HEIGHT = 1920, 1080
CORES = os.cpu_count()
SECONDS = 24  # as many as still have ten frames each
LINES = ("i=0; while :; do i=$((i+1)); "
         "echo \"$i $RANDOM a line of text as compilers print them $RANDOM $RANDOM\"; sleep %s; done")
# The frames that a GIF is made of, fitted by the same filter.
SAMPLED = ("fps=10:round=up:start_time=0,"
           "scale=800:800:force_original_aspect_ratio=decrease:flags=area+accurate_rnd+full_chroma_int")
# How ffmpeg chooses colours, and how it uses them.
SETTINGS = {
    "full": ("full", "dither=none"),
    "diff": ("diff", "dither=none:diff_mode=rectangle"),
    "diff, bayer 5": ("diff", "dither=bayer:bayer_scale=5:diff_mode=rectangle"),
    "full, sierra2_4a": ("full", "dither=sierra2_4a"),
    "a palette a frame": ("single", "dither=none:new=1"),
}


def terminal(geometry, seconds):
    return ["xterm", "-geometry", geometry, "-fa", "DejaVu Sans Mono", "-fs", "10", "-e", "bash", "-c",
            LINES % seconds]


def film(file, scene, seconds, background=None, is_moved=False):
    """One segment, as the program has it filmed."""
    with Desktop("--size", f"{WIDTH}x{HEIGHT}", "--wm", "none", "--compositor", "none", "--tray",
                 "none") as desktop:
        if background:
            desktop.run(probe("paint"), background)
        with desktop.start(*scene):
            time.sleep(1)  # its window is there
            tool = subprocess.Popen([TOOL, "-v", "-x", "-C", "-R", f"0,0,{WIDTH},{HEIGHT}", str(file)],
                                    env=desktop.environment, stdin=subprocess.DEVNULL)
            end = time.monotonic() + seconds + 0.5
            while time.monotonic() < end:
                step = (end - time.monotonic()) % 8
                if is_moved and step < 3:  # a window is dragged, then somebody reads
                    window = desktop.run("xdotool", "search", "--class", "xterm").split()[-1]
                    desktop.run("xdotool", "windowmove", window, str(int(200 + 250 * step)),
                                str(int(150 + 90 * step)))
                time.sleep(0.03)
            tool.send_signal(signal.SIGINT)
            if tool.wait() != 0:
                raise Failed(f"the capture tool ended with {tool.returncode}")


def ffmpeg(*words):
    return ["ffmpeg", "-nostdin", "-v", "error", "-y", *map(str, words)]


def do(command):
    subprocess.run(command, stdin=subprocess.DEVNULL, check=True)


def measured(command):
    """Seconds, processor seconds, and the most memory in MB; of a shell's children that of the largest."""
    begin = time.monotonic()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise Failed(f"{command[0]} ended with {process.returncode}")
    return (time.monotonic() - begin, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1000)


def programs(clip, folder):
    """The command that makes each GIF, by who makes it."""
    def theirs(colours, use, out):
        return ffmpeg("-t", SECONDS, "-i", clip, "-filter_complex",
                      f"{SAMPLED},split[a][b];[a]palettegen=stats_mode={colours}[p];[b][p]paletteuse={use}",
                      folder / f"{out}.gif")

    def then(first, *second):
        return ["sh", "-c", shlex.join(map(str, first)) + " && " + shlex.join(map(str, second))]

    commands = {"Tamrik": [probe("gif"), str(folder / "Tamrik.gif"), str(clip), "0", str(SECONDS)]}
    for name, (colours, use) in SETTINGS.items():
        commands[f"ffmpeg, {name}"] = theirs(colours, use, f"ffmpeg, {name}")
    plain = folder / "plain.gif"
    first = theirs(*SETTINGS["full"], "plain")
    commands["the first, then gifsicle -O3"] = then(
        first, "gifsicle", "-O3", plain, "-o", folder / "the first, then gifsicle -O3.gif")
    commands["the same, --lossy=20"] = then(
        first, "gifsicle", "-O3", "--lossy=20", plain, "-o", folder / "the same, --lossy=20.gif")
    return commands


def likeness(gif, frames):
    """PSNR and SSIM of all channels, every tenth of a second; and how many frames there are."""
    shown = subprocess.run(
        ["ffmpeg", "-nostdin", "-hide_banner", "-min_delay", "0", "-i", str(gif), "-i", str(frames),
         "-filter_complex",
         "[0:v]fps=10,settb=1/10,setpts=N,format=gbrp,split[a][b];"
         "[1:v]settb=1/10,setpts=N,format=gbrp,split[c][d];[a][c]psnr=shortest=1[x];[b][d]ssim=shortest=1[y]",
         "-map", "[x]", "-map", "[y]", "-fps_mode", "passthrough", "-f", "null", "-"],
        capture_output=True, text=True, check=True).stderr
    count = subprocess.run(["ffprobe", "-v", "error", "-min_delay", "0", "-count_packets", "-show_entries",
                            "stream=nb_read_packets", "-of", "csv=p=0", str(gif)],
                           capture_output=True, text=True, check=True).stdout
    return (float(re.search(r"PSNR .*average:([\d.]+|inf)", shown).group(1)),
            float(re.search(r"SSIM .*All:([\d.]+)", shown).group(1)), int(count.strip().strip(",")))


def compare(report, name, clip, folder, rounds):
    frames = folder / "frames.nut"
    do(ffmpeg("-t", SECONDS, "-i", clip, "-vf", SAMPLED, "-c:v", "rawvideo", "-pix_fmt", "bgr0", frames))
    commands = programs(clip, folder)
    figures = {program: [] for program in commands}
    for _ in range(rounds):
        for program, command in commands.items():
            figures[program].append(measured(command))
    report.say(f"## {name}, {SECONDS} s\n")
    rows = []
    for program, values in figures.items():
        seconds, cpu, memory = (statistics.median(column) for column in zip(*values))
        gif = folder / f"{program}.gif"
        psnr, ssim, count = likeness(gif, frames)
        if program == "Tamrik" and count != 10 * SECONDS:
            report.problem(f"{program}'s GIF has {count} frames")
        rows.append([program, f"{seconds:.1f}", f"{cpu:.1f}", f"{memory:.0f}", f"{gif.stat().st_size / 1e3:.0f}",
                     f"{psnr:.1f}", f"{ssim:.4f}"])
    report.say(table(["program", "s", "CPU s", "MB in memory", "KB", "PSNR (dB)", "SSIM"], rows))
    report.say()


def sparse(report, name, clip, folder, rounds):
    """Ten minutes, made of a shorter film again and again."""
    long, gif = folder / "long.mp4", folder / "long.gif"
    do(ffmpeg("-stream_loop", 599 // SECONDS, "-i", clip, "-t", 600, "-c", "copy", long))
    ours, theirs = [], []
    for _ in range(rounds):
        ours.append(measured([probe("gif"), str(gif), str(long)]))
        theirs.append(measured(ffmpeg("-v", "fatal", "-threads", CORES, "-i", long, "-f", "null", "-")))
    report.say(f"## 240 frames out of ten minutes of {name}\n")
    medians = [[statistics.median(column) for column in zip(*values)] for values in (ours, theirs)]
    rows = [[program, *(f"{figure:.1f}" for figure in figures)]
            for program, figures in zip(("Tamrik: the GIF", "ffmpeg: decoding all of it"), medians)]
    rows.append(["ratio", *(f"{one / other:.2f}" for one, other in zip(*medians))])
    report.say(table(["", "s", "CPU s", "MB in memory"], rows))
    report.say()
    long.unlink()


def run_bench(report, folder):
    rounds = 1 if report.is_quick else 3
    desk, lines, motion, camera = (folder / name for name in (
        "desk.mov", "lines.mov", "motion.mov", "camera.mp4"))
    film(desk, terminal("90x30+200+150", 0.25), SECONDS, background="mixed", is_moved=True)
    compare(report, "windows, one of which is dragged", desk, folder, rounds)
    sparse(report, "windows", desk, folder, rounds)
    if report.is_quick:
        return
    film(lines, terminal("300x100+0+0", 0.066), SECONDS)
    compare(report, "terminal, 15 lines a second", lines, folder, rounds)
    film(motion, [probe("motion"), "30"], SECONDS)
    do(ffmpeg("-i", motion, "-vf", "noise=alls=4:allf=t", "-c:v", "libx264", "-preset", "superfast", "-crf", "23",
              camera))
    compare(report, "a photograph that moves, with a sensor's noise", camera, folder, rounds)
    # As the program films: a key frame a second, no frame held back.
    do(ffmpeg("-i", camera, "-c:v", "libx264", "-preset", "superfast", "-tune", "zerolatency", "-crf", "23",
              "-g", "30", folder / "keyed.mp4"))
    sparse(report, "the same photograph", folder / "keyed.mp4", folder, rounds)


def run(report):
    with tempfile.TemporaryDirectory(prefix="tamrik-bench-", dir=os.environ.get("TMPDIR", "/var/tmp")) as path:
        run_bench(report, pathlib.Path(path))
