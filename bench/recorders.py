"""Programs that film the screen, with the same encoder at the same settings, each driven as it allows."""

import os
import pathlib
import signal
import subprocess
import time

from desktops import BUILD, PATIENCE_SECONDS, Failed

TOOL = str(BUILD / "libexec" / "tamrik" / "screencapture")
TICKS_A_SECOND = os.sysconf("SC_CLK_TCK")


class Film:
    """What filming took: processor seconds a second, and seconds from the wish to end to the file."""

    def __init__(self, file, cost, end):
        self.file, self.cost, self.end = file, cost, end
        self.duration = None  # whoever reads the file says


def by_signal(desktop, command, file, seconds):
    """Films with a program that ends, and has finished its file, some time after SIGINT."""
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
    return Film(file, (usage.ru_utime + usage.ru_stime) / (ended - before), ended - asked)


def screencapture(desktop, size, _rate, seconds):
    file = desktop.home / "ours.mov"
    return by_signal(desktop, [TOOL, "-v", "-x", "-C", "-R", f"0,0,{size[0]},{size[1]}", str(file)],
                     file, seconds)


def ffmpeg(desktop, size, rate, seconds):
    file = desktop.home / "ffmpeg.mov"
    return by_signal(
        desktop,
        ["ffmpeg", "-v", "error", "-y", "-f", "x11grab", "-framerate", str(rate), "-video_size",
         f"{size[0]}x{size[1]}", "-i", desktop.environment["DISPLAY"], "-c:v", "libx264", "-preset",
         "superfast", "-tune", "zerolatency", "-crf", "18", "-g", str(rate), "-pix_fmt", "yuv420p",
         str(file)], file, seconds)


def processor_time(process):
    """Seconds up to now, of threads that have ended too."""
    line = pathlib.Path("/proc", str(process.pid), "stat").read_text(encoding="utf-8")
    fields = line.rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / TICKS_A_SECOND


def simplescreenrecorder(desktop, size, rate, seconds):
    """A window that is hidden and obeys its standard input. Counted from the wish to begin to the
    finished file: its own start is not filming."""
    file, settings, log = (desktop.home / name for name in ("ssr.mkv", "ssr.conf", "ssr.log"))
    file.unlink(missing_ok=True)
    settings.write_text(f"""[welcome]
skip_page=true
[input]
video_area=screen
video_area_screen=0
video_x=0
video_y=0
video_w={size[0]}
video_h={size[1]}
video_frame_rate={rate}
video_scale=false
video_record_cursor=true
audio_enabled=false
[output]
file={file}
separate_files=false
add_timestamp=false
container=mkv
video_codec=other
video_codec_av=libx264
video_options="preset=superfast,tune=zerolatency,crf=18,g={rate}"
video_allow_frame_skipping=true
[record]
hotkey_enable=false
""", encoding="utf-8")
    with open(log, "wb") as said:
        process = subprocess.Popen(
            ["simplescreenrecorder", "--start-hidden", "--no-systray", f"--settingsfile={settings}"],
            env=desktop.environment, cwd=desktop.home, stdin=subprocess.PIPE, stdout=said,
            stderr=said)

    def tell(command):
        process.stdin.write(command.encode() + b"\n")
        process.stdin.flush()

    def await_said(words):
        deadline = time.monotonic() + PATIENCE_SECONDS
        while words not in log.read_text(encoding="utf-8", errors="replace"):
            if process.poll() is not None or time.monotonic() > deadline:
                raise Failed(f"simplescreenrecorder did not say '{words}'")
            time.sleep(0.002)

    try:
        time.sleep(1)  # it says nothing when it is ready; commands wait for it
        before, used = time.monotonic(), processor_time(process)
        tell("record-start")
        await_said("Started input.")
        time.sleep(seconds)
        asked = time.monotonic()
        tell("record-save")
        await_said("Stopped page.")
        ended = time.monotonic()
        cost = (processor_time(process) - used) / (ended - before)
        tell("quit")
        process.wait(PATIENCE_SECONDS)
    finally:
        process.kill()
        process.wait()
        process.stdin.close()
    return Film(file, cost, ended - asked)


ALL = {
    "screencapture": screencapture,
    "ffmpeg -f x11grab": ffmpeg,
    "simplescreenrecorder": simplescreenrecorder,
}
