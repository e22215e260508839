"""The annotations that the benches draw are those that their script makes."""

import json
import pathlib
import subprocess
import sys
import unittest

DATA = pathlib.Path(__file__).resolve().parents[2] / "bench" / "data"


class Annotations(unittest.TestCase):
    def test_they_are_made_the_same_each_time(self):
        made = subprocess.run([sys.executable, str(DATA / "make_annotations.py")],
                              capture_output=True, text=True, check=True).stdout
        self.assertEqual(made, (DATA / "desktop.png.tamrik.json").read_text(encoding="utf-8"))

    def test_all_kinds_are_among_them(self):
        kept = json.loads((DATA / "desktop.png.tamrik.json").read_text(encoding="utf-8"))
        self.assertEqual(len(kept["annotations"]), 200)
        self.assertEqual(len({each["kind"] for each in kept["annotations"]}), 9)


unittest.main()
