"""Tests scripts/count-tests on made-up results of ctest and GoogleTest."""

import json
import pathlib
import subprocess
import tempfile
import unittest

COUNT_TESTS = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "count-tests"

PASSED = {"name": "passes", "status": "RUN", "result": "COMPLETED"}
FAILED = {"name": "fails", "status": "RUN", "result": "COMPLETED", "failures": [{"failure": "x"}]}
SKIPPED = {"name": "skips", "status": "RUN", "result": "SKIPPED"}
DISABLED = {"name": "DISABLED_sleeps", "status": "NOTRUN", "result": "SUPPRESSED"}


class CountTests(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.listed = []
        self.statuses = {}

    def add_entry(self, name, status, command=("run-it",)):
        self.listed.append({"name": name, "command": list(command)})
        if status is not None:
            self.statuses[name] = status

    def add_program(self, name, status, tests):
        """A test program whose results hold `tests`; none at all when that is None."""
        results = self.folder / f"{name}.json"
        if tests is not None:
            suite = {"name": "Suite", "testsuite": tests}
            results.write_text(json.dumps({"testsuites": [suite]}))
        self.add_entry(name, status, ["run-it", f"--gtest_output=json:{results}"])
        return results

    def count(self):
        """The exit status and the lines."""
        listed = self.folder / "listed"
        listed.write_text(json.dumps({"tests": self.listed}))
        junit = self.folder / "junit.xml"
        cases = [f'<testcase name="{n}" status="{s}"/>' for n, s in self.statuses.items()]
        junit.write_text(f"<testsuite>{''.join(cases)}</testsuite>")
        run = subprocess.run([COUNT_TESTS, listed, junit], capture_output=True, text=True, check=False)
        self.assertEqual(run.stderr, "")
        return run.returncode, run.stdout.splitlines()

    def assert_problem(self, problem, passed):
        self.assertEqual(self.count(), (1, [problem, f"{passed} passed, 1 failed"]))

    def test_counts_single_tests_of_programs_and_others_as_one(self):
        self.add_program("one", "run", [PASSED, PASSED, PASSED])
        self.add_program("two", "run", [PASSED])
        self.add_entry("script", "run")
        self.assertEqual(self.count(), (0, ["5 passed, 0 failed"]))

    def test_a_failed_test_counts_once(self):
        self.add_program("one", "fail", [PASSED, FAILED])
        self.assert_problem("one: Suite.fails: failed", 1)

    def test_a_failed_entry_that_is_no_test_program_counts(self):
        self.add_entry("good", "run")
        self.add_entry("bad", "fail")
        self.assert_problem("bad: failed", 1)

    def test_a_skipped_test_is_a_failure(self):
        self.add_program("one", "run", [PASSED, SKIPPED])
        self.assert_problem("one: Suite.skips: did not run (run, skipped)", 1)

    def test_a_disabled_test_is_a_failure(self):
        self.add_program("one", "run", [PASSED, DISABLED])
        self.assert_problem("one: Suite.DISABLED_sleeps: did not run (notrun, suppressed)", 1)

    def test_a_test_that_a_filter_left_out_is_a_failure(self):
        left_out = {"name": "left", "status": "NOTRUN", "result": "COMPLETED"}
        self.add_program("one", "run", [PASSED, left_out])
        self.assert_problem("one: Suite.left: did not run (notrun, completed)", 1)

    def test_a_program_without_results_is_a_failure(self):
        for status in ("run", "fail"):
            with self.subTest(status):
                self.setUp()
                self.add_program("other", "run", [PASSED])
                self.add_program("one", status, None)
                self.assert_problem("one: left no results (FileNotFoundError)", 1)

    def test_results_cut_short_are_a_failure(self):
        self.add_program("one", "fail", [PASSED]).write_text('{"testsuites": [')
        self.assert_problem("one: left no results (JSONDecodeError)", 0)

    def test_a_program_without_tests_is_a_failure(self):
        self.add_program("one", "run", [])
        self.assert_problem("one: has no tests", 0)

    def test_a_program_that_fails_after_its_tests_passed_is_a_failure(self):
        # A sanitizer speaks up at the end, when the results are written.
        self.add_program("one", "fail", [PASSED])
        self.assert_problem("one: failed, though its tests passed (fail)", 1)

    def test_an_entry_that_was_not_run_is_a_failure(self):
        for status in ("notrun", "disabled"):
            with self.subTest(status):
                self.setUp()
                self.add_program("one", status, [PASSED])
                self.assert_problem(f"one: was not run ({status})", 0)

    def test_an_entry_that_ctest_says_nothing_of_is_a_failure(self):
        self.add_entry("one", None)
        self.assert_problem("one: was not run (unknown to ctest)", 0)

    def test_an_entry_that_was_not_listed_is_a_failure(self):
        self.add_entry("one", "run")
        self.statuses["two"] = "run"
        self.assert_problem("two: ran without being listed", 1)

    def test_no_tests_at_all_are_a_failure(self):
        self.assert_problem("ctest: there are no tests", 0)

    def test_missing_input_is_an_error(self):
        run = subprocess.run([COUNT_TESTS, "no-such-file", "neither"], capture_output=True, check=False)
        self.assertNotEqual(run.returncode, 0)


if __name__ == "__main__":
    unittest.main()
