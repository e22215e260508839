"""Tests check_layers.py: each rule on a small tree that breaks it once."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name("check_layers.py")

QT_HEADERS = ["QtCore/QString", "QtCore/qstring.h", "QtCore/QtCore", "QtGui/QColor",
              "QtWidgets/QWidget", "QtDBus/QDBusMessage"]

# A tree in which every layer does all that it may.
CLEAN = {
    "src/Support/Geometry.h": "#include <cmath>\n",
    "src/Support/ScreenTable.cpp": '#include "Support/Geometry.h"\n',
    "src/Support/Result.h": "#include <variant>\n",
    "src/Support/Log.h": '#include "Support/Geometry.h"\n#include <QString>\n',
    "src/SelectionModel.h": '#include "Support/Log.h"\n#include <QtGui/QColor>\n',
    "src/Platform/WindowTraits.h": '#include "Support/Log.h"\n#include <QtGui/QWindow>\nclass QWidget;\n',
    "src/Platform/Linux/Pasteboard.cpp":
        '#include "Platform/Linux/X11/Atoms.h"\n#include <QDBusMessage>\n',
    "src/Platform/Linux/X11/Atoms.h": "#ifdef __linux__\n#endif\n",
    "src/Platform/Linux/X11/Connection.h": '#include "Support/Result.h"\n#include <xcb/xcb.h>\n',
    "src/Platform/Linux/X11/WindowTraits.cpp":
        '#include "Platform/WindowTraits.h"\n#include "Atoms.h"\n#include "Connection.h"\n'
        "#include <QtWidgets/QWidget>\n"
        "#include <qpa/qplatformscreen.h>\n#include <xcb/xcb.h>\n#ifdef Q_OS_LINUX\n#endif\n",
    "src/Preferences.h": '#include "SelectionModel.h"\n#include "Platform/WindowTraits.h"\n',
    "src/Chrome.h": "#include <QWidget>\n",
    "src/SelectionView.cpp": '#include "Chrome.h"\n#include "Preferences.h"\n#include "SelectionView.moc"\n',
    "src/SelectionView.h": "",
    "src/AppDelegate.h": '#include "SelectionView.h"\n#include "Platform/WindowTraits.h"\n',
    "src/main.cpp": '#include "AppDelegate.h"\n#include "Platform/Linux/X11/Atoms.h"\n',
    "tools/screencapture/main.cpp":
        '#include "Capture.h"\n#include "Platform/Linux/X11/Connection.h"\n#include <xcb/shm.h>\n#include <libdeflate.h>\n',
    "tools/screencapture/Capture.h": "#include <sys/stat.h>\n",
    "tests/unit/SomeTest.cpp": "#include <QtWidgets/QWidget>\n#ifdef __linux__\n#endif\n",
}


def run_check(*arguments):
    return subprocess.run([sys.executable, CHECK, *arguments], capture_output=True, text=True,
                          check=False)


class CheckLayers(unittest.TestCase):
    def check(self, changes=None):
        """The exit status and the lines for the clean tree with some files added or replaced."""
        with tempfile.TemporaryDirectory() as folder:
            files = {f"qt/{name}": "" for name in QT_HEADERS} | CLEAN | (changes or {})
            for name, text in files.items():
                path = pathlib.Path(folder) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            run = run_check(folder, f"{folder}/qt")
        self.assertEqual(run.stderr, "")
        return run.returncode, run.stdout.splitlines()

    def assert_clean(self, changes=None):
        status, lines = self.check(changes)
        self.assertEqual((status, len(lines)), (0, 1), lines)
        self.assertIn("keep to their layers", lines[0])

    def assert_problem(self, changes, problem):
        self.assertEqual(self.check(changes), (1, [problem]))

    def test_a_clean_tree_passes(self):
        self.assert_clean()

    def test_includes_that_go_up_or_sideways(self):
        for name, text, problem in [
            ("src/Support/ScreenTable.h", '#include "Support/Log.h"',
             'base may not include support: "Support/Log.h"'),
            ("src/Platform/Linux/X11/Connection.cpp", '#include "Support/Log.h"',
             'x11 may not include support: "Support/Log.h"'),
            ("src/Platform/Linux/X11/Connection.cpp", '#include "Atoms.h"',
             'x11 may not include linux: "Atoms.h"'),
            ("src/Support/Log.cpp", '#include "SelectionModel.h"',
             'support may not include model: "SelectionModel.h"'),
            ("src/SelectionModel.cpp", '#include "Platform/WindowTraits.h"',
             'model may not include platform: "Platform/WindowTraits.h"'),
            ("src/Platform/Screens.h", '#include "SelectionModel.h"',
             'platform may not include model: "SelectionModel.h"'),
            ("src/Platform/Screens.h", '#include "Platform/Linux/X11/Atoms.h"',
             'platform may not include linux: "Platform/Linux/X11/Atoms.h"'),
            ("src/Platform/Linux/X11/HotKeys.cpp", '#include "Preferences.h"',
             'linux may not include services: "Preferences.h"'),
            ("src/Platform/Linux/Login.cpp", '#include "SelectionModel.h"',
             'linux may not include model: "SelectionModel.h"'),
            ("src/Platform/MacOS/Login.mm", '#import "Platform/Linux/X11/Atoms.h"',
             'macos may not include linux: "Platform/Linux/X11/Atoms.h"'),
            ("src/CaptureManager.cpp", '#include "Chrome.h"',
             'services may not include kit: "Chrome.h"'),
            ("src/Chrome.cpp", '#include "SelectionView.h"',
             'kit may not include selection: "SelectionView.h"'),
            ("src/SelectionOverlay.cpp", '#include "AppDelegate.h"',
             'selection may not include app: "AppDelegate.h"'),
            ("src/StatusMenu.cpp", '#include "Platform/Linux/X11/Atoms.h"',
             'app may not include linux: "Platform/Linux/X11/Atoms.h"'),
            ("tools/screencapture/Still.cpp", '#include "Support/Log.h"',
             'capture tool may not include support: "Support/Log.h"'),
            ("tools/screencapture/Still.cpp", '#include "AppDelegate.h"',
             'capture tool may not include app: "AppDelegate.h"'),
        ]:
            with self.subTest(name=name, text=text):
                self.assert_problem({name: f"\n{text}\n"}, f"{name}:2: {problem}")

    def test_a_path_that_climbs_is_seen_through(self):
        self.assert_problem(
            {"src/Support/Log.cpp": '#include "../SelectionModel.h"\n'},
            'src/Support/Log.cpp:1: support may not include model: "../SelectionModel.h"')

    def test_qt_modules(self):
        for name, header, problem in [
            ("src/Support/ScreenTable.h", "QtCore/QString", "base may not include QtCore"),
            ("src/Support/Clock.h", "QtGui/QColor", "support may not include QtGui"),
            ("src/ChipPosition.cpp", "QtWidgets/QWidget", "model may not include QtWidgets"),
            ("src/Platform/HotKeys.h", "QtWidgets/QWidget", "platform may not include QtWidgets"),
            ("src/HotKey.cpp", "QtWidgets/QWidget", "services may not include QtWidgets"),
            ("src/StatusMenu.cpp", "QtDBus/QDBusMessage", "app may not include QtDBus"),
            ("src/Chrome.cpp", "QtGui/private/qimage_p.h", "kit may not include Qt's private headers"),
            ("src/Chrome.cpp", "qpa/qplatformscreen.h", "kit may not include Qt's private headers"),
            ("tools/screencapture/Still.cpp", "QtCore/QString", "capture tool may not include QtCore"),
        ]:
            with self.subTest(name=name, header=header):
                self.assert_problem({name: f"#include <{header}>\n"}, f"{name}:1: {problem}: <{header}>")

    def test_qt_headers_that_do_not_name_their_module(self):
        for name, header, problem in [
            ("src/Support/ScreenTable.h", "qstring.h", "base may not include QtCore"),
            ("src/Support/ScreenTable.h", "QtCore", "base may not include QtCore"),
            ("src/Platform/Linux/X11/Screens.cpp", "QString", "x11 may not include QtCore"),
            ("src/Support/Clock.h", "QColor", "support may not include QtGui"),
            ("src/HotKey.cpp", "QWidget", "services may not include QtWidgets"),
        ]:
            with self.subTest(name=name, header=header):
                self.assert_problem({name: f"#include <{header}>\n"}, f"{name}:1: {problem}: <{header}>")

    def test_a_qt_header_that_does_not_exist(self):
        self.assert_problem({"src/Chrome.cpp": "#include <QWodget>\n"},
                            "src/Chrome.cpp:1: <QWodget> looks like Qt's and is none of its headers")

    def test_libraries(self):
        self.assert_problem({"src/HotKey.cpp": "#include <xcb/xcb.h>\n"},
                            "src/HotKey.cpp:1: services may not include the library xcb: <xcb/xcb.h>")

    def test_an_include_that_leads_nowhere(self):
        self.assert_problem({"src/Chrome.cpp": '#include "Crome.h"\n'},
                            'src/Chrome.cpp:1: "Crome.h" is no file of ours')

    def test_a_file_that_no_layer_claims(self):
        self.assert_problem({"src/Helpers.h": ""}, "src/Helpers.h: no layer claims this file")

    def test_conditions_on_what_a_system_has(self):
        self.assert_problem({"src/Support/Log.cpp": "#ifdef O_TMPFILE\n#endif\n"},
                            "src/Support/Log.cpp:1: conditional code belongs below src/Platform")
        self.assert_clean({"src/Platform/Linux/Screens.cpp": "#ifdef O_TMPFILE\n#endif\n"})

    def test_operating_system_macros(self):
        for macro in ("__linux__", "__APPLE__", "Q_OS_MACOS", "TARGET_OS_OSX", "_WIN32"):
            with self.subTest(macro):
                self.assert_problem({"src/Chrome.cpp": f"#if defined({macro})\n#endif\n"},
                                    f"src/Chrome.cpp:1: {macro} belongs below src/Platform")

    def test_what_is_in_comments_and_strings_does_not_count(self):
        self.assert_clean({"src/Support/Log.cpp":
                           '// #include "AppDelegate.h"\n/*\n#include <QtGui/QColor>\n__APPLE__ */\n'
                           'const char* text = "__linux__ // \\" Q_OS_LINUX";\n'
                           'const char* raw = R"(\n#ifdef __linux__\n)";\n'})

    def test_a_comment_mark_in_a_string_hides_nothing(self):
        self.assert_problem({"src/Support/Log.cpp": 'auto url = "http://";\n#include <QtGui/QColor>\n'},
                            "src/Support/Log.cpp:2: support may not include QtGui: <QtGui/QColor>")

    def test_headers_in_a_circle(self):
        self.assert_problem({"src/Support/Clock.h": '#include "Support/Guarded.h"\n',
                             "src/Support/Guarded.h": '#include "Support/Process.h"\n',
                             "src/Support/Process.h": '#include "Support/Clock.h"\n'},
                            "headers in a circle: src/Support/Clock.h -> src/Support/Guarded.h -> "
                            "src/Support/Process.h -> src/Support/Clock.h")

    def test_a_header_that_includes_itself(self):
        self.assert_problem({"src/Support/Clock.h": '#include "Clock.h"\n'},
                            "headers in a circle: src/Support/Clock.h -> src/Support/Clock.h")

    def test_two_ways_to_one_header_are_no_circle(self):
        self.assert_clean({"src/Support/Clock.h": '#include "Support/Log.h"\n#include "Support/Geometry.h"\n'})

    def test_length(self):
        for name in ("src/Chrome.cpp", "tools/screencapture/Still.cpp", "tests/unit/LongTest.cpp",
                     "bench/Bench.h"):
            with self.subTest(name):
                self.assert_clean({name: "\n" * 299})
                status, lines = self.check({name: "\n" * 300})
                self.assertEqual((status, lines[0]),
                                 (0, f"note: {name}: 300 lines; is it still about one thing?"))
                self.assertEqual(self.check({name: "\n" * 599})[0], 0)
                self.assert_problem({name: "\n" * 600},
                                    f"{name}: 600 lines; fewer than 600 are allowed")

    def test_an_empty_tree_is_an_error(self):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "qt/QtCore/QString").mkdir(parents=True)
            run = run_check(folder, f"{folder}/qt")
        self.assertEqual((run.returncode, run.stdout), (1, f"{folder}: there are no sources\n"))

    def test_without_headers_of_qt_nothing_is_said_to_be_right(self):
        with tempfile.TemporaryDirectory() as folder:
            run = run_check(folder, folder)
        self.assertEqual((run.returncode, run.stderr), (1, f"{folder}: there are no headers of Qt\n"))


if __name__ == "__main__":
    unittest.main()
