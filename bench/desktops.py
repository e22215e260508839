"""Virtual desktops, and programs on them."""

import os
import pathlib
import subprocess
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
BUILD = ROOT / "build" / "release"
PATIENCE_SECONDS = 20


class Failed(Exception):
    """Something did not do its work."""


def probe(name):
    return str(BUILD / "bench" / f"bench_{name}")


TAMRIK = str(BUILD / "bin" / "tamrik")


class Desktop:
    """One virtual desktop, gone again at the end of the `with` block or of this process."""

    def __init__(self, *options):
        self.options = [str(option) for option in options]
        self.environment = {}

    def __enter__(self):
        start = [str(ROOT / "scripts" / "desktop"), "start", "--until-exit-of", str(os.getpid()),
                 *self.options]
        shell = subprocess.run(
            ["bash", "-c", 'exports=$("$@") && eval "$exports" && env -0', "bash", *start],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        if shell.returncode != 0:
            raise Failed(f"no desktop: {shell.stderr.decode()}")
        pairs = (entry.partition("=") for entry in shell.stdout.decode().split("\0") if entry)
        self.environment = {name: value for name, _, value in pairs}
        return self

    def __exit__(self, *_):
        subprocess.run([str(ROOT / "scripts" / "desktop"), "stop", "--name",
                        self.environment["TAMRIK_DESKTOP"]], stderr=subprocess.DEVNULL, check=False)

    @property
    def home(self):
        return pathlib.Path(self.environment["HOME"])

    def run(self, *command, output=subprocess.PIPE):
        """Its output, once it has ended well."""
        try:
            run = subprocess.run(
                command, env=self.environment, cwd=self.home, stdin=subprocess.DEVNULL,
                stdout=output, stderr=subprocess.PIPE, timeout=PATIENCE_SECONDS, check=False)
        except subprocess.TimeoutExpired as error:
            raise Failed(f"{command[0]} did not end") from error
        if run.returncode != 0:
            raise Failed(f"{command[0]} ended with {run.returncode}: {run.stderr.decode().strip()}")
        return (run.stdout or b"").decode(errors="replace")

    def start(self, *command, output=subprocess.DEVNULL):
        return Program(subprocess.Popen(
            command, env=self.environment, cwd=self.home, stdin=subprocess.DEVNULL, stdout=output,
            stderr=subprocess.DEVNULL))


class Program:
    """A program that runs until the end of the `with` block."""

    def __init__(self, process):
        self.process = process
        self.folder = pathlib.Path("/proc", str(process.pid))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        try:
            self.process.wait(PATIENCE_SECONDS)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        if self.process.stdout:
            self.process.stdout.close()

    def await_calm(self, seconds=0.4):
        """Until it has used no processor time for so long: it is up and has nothing left to do."""
        deadline = time.monotonic() + PATIENCE_SECONDS
        used, since = None, time.monotonic()
        while time.monotonic() - since < seconds:
            if self.process.poll() is not None:
                raise Failed(f"{self.process.args[0]} ended with {self.process.returncode}")
            if time.monotonic() > deadline:
                raise Failed(f"{self.process.args[0]} does not come to rest")
            now = self.processor_time()
            if now != used:
                used, since = now, time.monotonic()
            time.sleep(0.02)

    def processor_time(self):
        """Nanoseconds that its threads have run. Unlike the ticks in `stat` it misses nothing."""
        return sum(int((thread / "schedstat").read_text(encoding="ascii").split()[0])
                   for thread in self.threads())

    def threads(self):
        return list((self.folder / "task").iterdir())

    def context_switches(self):
        count = 0
        for thread in self.threads():
            for line in (thread / "status").read_text(encoding="ascii").splitlines():
                name, _, value = line.partition(":")
                if name in ("voluntary_ctxt_switches", "nonvoluntary_ctxt_switches"):
                    count += int(value)
        return count

    def memory(self):
        """Megabytes: resident, its share of what is shared, and what is its own alone."""
        sizes = {}
        for line in (self.folder / "smaps_rollup").read_text(encoding="ascii").splitlines()[1:]:
            name, _, value = line.partition(":")
            sizes[name] = int(value.split()[0]) / 1000
        return {"RSS": sizes["Rss"], "PSS": sizes["Pss"], "anonymous": sizes["Anonymous"]}
