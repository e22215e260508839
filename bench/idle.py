"""What a program with an icon in the status area costs while nothing happens, and how soon it is there."""

import contextlib
import subprocess
import time

from desktops import TAMRIK, Desktop, Failed, probe
from figures import median_and_spread, ratio, table

PROGRAMS = {
    "Tamrik": [TAMRIK],
    "empty Qt program with an icon": [probe("empty_tray")],
    "flameshot": ["flameshot"],
}
TRAYS = {"xembed": "XEmbed", "sni": "StatusNotifierItem"}


@contextlib.contextmanager
def watching(desktop, tray):
    """Runs what prints a line as soon as an icon is there; gives a function that waits for it."""
    if tray == "xembed":
        command, ready, wanted = [probe("docked")], "watching", "docked"
    else:
        command = ["stdbuf", "-oL", "gdbus", "monitor", "--session", "--dest",
                   "org.kde.StatusNotifierWatcher"]
        ready, wanted = "The name org.kde.StatusNotifierWatcher is owned", "StatusNotifierItemRegistered"
    with desktop.start(*command, output=subprocess.PIPE) as program:
        # It ends with the desktop at the latest, so reading ends too.
        def await_line(part):
            for line in program.process.stdout:
                if part in line.decode():
                    return
            raise Failed(f"{command[0]} did not say '{part}'")
        await_line(ready)
        yield lambda: await_line(wanted)


def seconds_to_icon(desktop, tray, command):
    with watching(desktop, tray) as await_icon:
        before = time.monotonic()
        with desktop.start(*command) as program:
            await_icon()
            seconds = time.monotonic() - before
            program.await_calm()
    return seconds


def measure_start(report, tray, rounds):
    seconds = {name: [] for name in PROGRAMS}
    with contextlib.ExitStack() as stack:
        desktops = {name: stack.enter_context(Desktop("--tray", tray)) for name in PROGRAMS}
        for turn in range(rounds + 1):
            for name, command in PROGRAMS.items():
                taken = seconds_to_icon(desktops[name], tray, command)
                if turn > 0:  # the first reads the programs from the disk
                    seconds[name].append(taken)
    report.say(f"## start to the icon in the status area, {TRAYS[tray]}\n")
    report.say(table(["program", "ms: median [quartiles]", "ours / theirs"],
                     [[name, median_and_spread([1000 * s for s in seconds[name]]),
                       f"{ratio(seconds['Tamrik'], seconds[name]):.2f}"] for name in PROGRAMS]))
    report.say()


def rest(program, seconds):
    """Context switches of all its threads meanwhile, and its memory afterwards."""
    program.await_calm()
    before = program.context_switches()
    time.sleep(seconds)
    return program.context_switches() - before, program.memory()


def capture(desktop):
    folder = desktop.home / "Pictures" / "Tamrik"
    folder.mkdir(parents=True)
    desktop.run(probe("confirm"), str(folder), str(desktop.home / "pasted.png"), "0,0", "1900,1000")


def measure_rest(report, tray, seconds):
    rows = []

    def note(name, when, found):
        switches, memory = found
        rows.append([f"{name}, {when}", str(switches), *(f"{memory[kind]:.1f}" for kind in memory)])

    for name, command in PROGRAMS.items():
        with Desktop("--tray", tray) as desktop, desktop.start(*command) as program:
            note(name, "after its start", rest(program, seconds))
            if name == "Tamrik":
                capture(desktop)
                note(name, "after a capture of 1900 x 1000", rest(program, seconds))
    report.say(f"## at rest for {seconds} s, {TRAYS[tray]}\n")
    report.say(table(["program", "context switches", "RSS MB", "PSS MB", "anonymous MB"], rows))
    report.say()


def run(report):
    for tray in TRAYS:
        measure_start(report, tray, 2 if report.is_quick else 7)
        measure_rest(report, tray, 2 if report.is_quick else 20)
