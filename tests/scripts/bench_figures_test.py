"""Tests the statistics and tables of the benches."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "bench"))

from figures import median_and_spread, quartiles, ratio, table


class Figures(unittest.TestCase):
    def test_quartiles_lie_within_what_was_seen(self):
        self.assertEqual(quartiles([5, 1, 3, 2, 4]), (2, 4))
        self.assertEqual(quartiles([1, 2]), (1.25, 1.75))

    def test_one_value_is_its_own_quartiles(self):
        self.assertEqual(quartiles([7]), (7, 7))

    def test_the_median_comes_with_its_quartiles(self):
        self.assertEqual(median_and_spread([10, 30, 20, 1000, 0]), "20.0 [10.0 30.0]")
        self.assertEqual(median_and_spread([1.234, 1.234], digits=2), "1.23 [1.23 1.23]")

    def test_a_ratio_compares_what_was_measured_side_by_side(self):
        # The machine was ten times as slow for the second round, and the last one went wrong.
        self.assertEqual(ratio([1, 10, 50], [2, 20, 4]), 0.5)

    def test_rounds_that_do_not_match_have_no_ratio(self):
        with self.assertRaises(ValueError):
            ratio([1, 2], [1])

    def test_columns_line_up(self):
        self.assertEqual(
            table(["program", "ms"], [["ours", "3"], ["theirs, longer", "1000"]]),
            "| program        |   ms |\n"
            "|----------------|-----:|\n"
            "| ours           |    3 |\n"
            "| theirs, longer | 1000 |")

    def test_a_row_with_a_missing_cell_is_an_error(self):
        with self.assertRaises(ValueError):
            table(["program", "ms"], [["ours"]])


if __name__ == "__main__":
    unittest.main()
