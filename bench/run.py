#!/usr/bin/env python3
"""Runs benches: python3 bench/run.py [--quick] [NAME...]; see scripts/bench --help."""

import argparse
import datetime
import importlib
import pathlib
import sys

from desktops import ROOT, Failed

NAMES = ["still", "movie", "overlay", "confirm", "chips", "flatten", "canvas", "sidecar", "finish",
         "gif", "player", "idle"]


class Report:
    """What a bench has to say: on standard output at once, and in a file at the end."""

    def __init__(self, is_quick):
        self.is_quick = is_quick
        self.problems = []
        self.lines = []

    def say(self, text=""):
        print(text, flush=True)
        self.lines.append(text)

    def problem(self, text):
        self.problems.append(text)
        self.say(f"FAILED: {text}")

    def save(self, name):
        folder = pathlib.Path(ROOT, "out", "bench")
        folder.mkdir(parents=True, exist_ok=True)
        (folder / f"{name}.txt").write_text("\n".join(self.lines) + "\n", encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("names", nargs="*", metavar="NAME")
    arguments = parser.parse_args()
    unknown = set(arguments.names) - set(NAMES)
    if unknown:
        parser.error(f"no such bench: {', '.join(sorted(unknown))}")
    failed = False
    for name in arguments.names or NAMES:
        report = Report(arguments.quick)
        report.say(f"# {name}, {datetime.date.today()}{', quick' if arguments.quick else ''}\n")
        try:
            importlib.import_module(name).run(report)
        except Failed as error:
            report.problem(str(error))
        report.save(name)
        failed = failed or bool(report.problems)
    sys.exit(failed)


main()
