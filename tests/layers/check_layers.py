#!/usr/bin/env python3
"""Checks who includes whom: python3 check_layers.py ROOT QT_HEADERS

QT_HEADERS is the folder that has Qt's headers, a folder for each module, in which the module of a
header such as <QString> is looked up.

Linking does not keep layers apart (a target that links only Qt6::Core still finds
<QtWidgets/QWidget>), so this reads the #include lines themselves. It also finds operating system
macros outside the platform layers, headers that include each other in a circle, and files that have
grown too long. Prints one line a finding; ends with 1 when one is more than a note.
"""

import fnmatch
import pathlib
import re
import sys
from dataclasses import dataclass, field

# --- the rules -----------------------------------------------------------------------------------


@dataclass(frozen=True)
class Layer:
    files: list  # patterns below ROOT; the first layer that matches claims a file
    includes: list  # the layers whose headers it may include, besides its own
    qt: list  # the Qt modules it may include; "private" stands for Qt's private headers
    libraries: list = field(default_factory=list)  # of LIBRARIES
    may_ask_os: bool = False  # whether it may look at operating system macros


MODEL_AND_BELOW = ["base", "support", "model"]
SERVICES_AND_BELOW = MODEL_AND_BELOW + ["platform", "media", "services"]
EVERY_HEADER = SERVICES_AND_BELOW + ["kit", "selection", "chips", "controls", "bubble", "editor"]

LAYERS = {
    # What the capture tool shares with the program: it starts without Qt.
    "base": Layer(
        [f"src/Support/{name}.*" for name in (
            "FileDescriptor", "Geometry", "OutputFile", "RegularFile", "Result", "ScreenTable", "ToolParent")] +
        ["src/Platform/NewFiles.h", "src/Platform/*/NewFiles.cpp"],
        [],
        []),
    "x11": Layer(
        [f"src/Platform/Linux/X11/{name}.*" for name in (
            "Connection", "DesktopScale", "Handles", "PixelFormat", "RootImage", "RootReader",
            "RootWindow", "Screens", "SharedSegment")],
        ["base"],
        [],
        libraries=["xcb"],
        may_ask_os=True),
    "support": Layer(["src/Support/*"], ["base"], ["Core"]),
    "linux": Layer(
        ["src/Platform/Linux/*"],
        ["base", "support", "platform", "x11"],
        ["Core", "Gui", "Widgets", "DBus", "Network", "private"],
        libraries=["xcb"],
        may_ask_os=True),
    "macos": Layer(
        ["src/Platform/MacOS/*"],
        ["base", "support", "platform"],
        ["Core", "Gui", "Widgets", "private"],
        may_ask_os=True),
    "platform": Layer(["src/Platform/*"], ["base", "support"], ["Core", "Gui"], may_ask_os=True),
    "pictures": Layer(
        ["src/Media/Pictures/*"],
        ["base", "support", "media"],
        ["Core", "Gui"],
        libraries=["png"]),
    "gif": Layer(["src/Media/GIF/*"], ["base", "support", "media"], ["Core", "Gui"]),
    # FFmpeg's types, for the program and the capture tool.
    "av": Layer(["src/Media/Av/*"], ["base"], [], libraries=["av"]),
    "ffmpeg": Layer(
        ["src/Media/FFmpeg/*"],
        ["base", "support", "media", "gif", "av"],
        ["Core", "Gui"],
        libraries=["av"]),
    "mpv": Layer(
        ["src/Media/Mpv/*"],
        ["base", "support", "media"],
        ["Core", "Gui"],
        libraries=["av", "mpv"]),
    "camera": Layer(
        ["src/Media/GStreamer/*"],
        ["base", "support", "media"],
        ["Core", "Gui"],
        libraries=["av", "gstreamer"]),
    "media": Layer(["src/Media/*"], ["base", "support"], ["Core", "Gui"]),
    "model": Layer(
        ["src/SelectionModel.*", "src/SelectionTypes.*", "src/ChipPosition.*",
         "src/ChipPlacement.*", "src/ChipContent.*", "src/CaptureKind.*",
         "src/RecordingControlsPlacement.*", "src/RecordingTypes.*",
         "src/GIFSchedule.*", "src/TimeRange.*",
         "src/Editor/Annotation*", "src/Editor/BaseImage.*", "src/Editor/Sidecar*",
         "src/Editor/CanvasLayer.*", "src/Editor/CanvasModel.*", "src/Editor/CanvasPicture.*",
         "src/Editor/EditorLayout.*", "src/Editor/FrameGrid.*", "src/Editor/TrimModel.*", "src/Editor/ScaledPicture.*", "src/Editor/UndoHistory.*"],
        ["base", "support"],
        ["Core", "Gui"]),
    "services": Layer(
        ["src/BackgroundDrag.*", "src/HotKey.*", "src/CaptureManager.*", "src/ChipThumbnail.*", "src/GIFExporter.*",
         "src/Preferences.*",
         "src/RecordingFinisher.*", "src/RecordingJournal.*", "src/RecordingManager.*",
         "src/RecordingRecovery.*", "src/RecordingTools.*", "src/ScreenWatcher.*"],
        MODEL_AND_BELOW + ["platform", "media"],
        ["Core", "Gui"]),
    "kit": Layer(
        ["src/Chrome.*", "src/ChromeButton.*", "src/ChromeViews.*", "src/Fade.*",
         "src/NumberLabel.*", "src/SoftShadow.*", "src/StatusIcon.*", "src/Symbols.*", "src/SymbolDesigns/*"],
        ["base", "support"],
        ["Core", "Gui", "Widgets"]),
    # Panels meet through callbacks: each is a layer of its own, which no other panel includes.
    "selection": Layer(
        ["src/SelectionHUD.*", "src/SelectionOverlay.*", "src/SelectionSession.*",
         "src/SelectionWindow.*", "src/SelectionView.*"],
        SERVICES_AND_BELOW + ["kit"],
        ["Core", "Gui", "Widgets"]),
    "chips": Layer(
        ["src/ChipManager.*", "src/ChipPanel.*", "src/ChipView.*", "src/PassThroughOverlay.*"],
        SERVICES_AND_BELOW + ["kit"],
        ["Core", "Gui", "Widgets"]),
    "controls": Layer(
        ["src/RecordingControlsPanel.*"],
        SERVICES_AND_BELOW + ["kit"],
        ["Core", "Gui", "Widgets"]),
    "bubble": Layer(
        ["src/CameraBubblePanel.*"],
        SERVICES_AND_BELOW + ["kit"],
        ["Core", "Gui", "Widgets"]),
    "editor": Layer(
        ["src/Editor/*"],
        SERVICES_AND_BELOW + ["kit"],
        ["Core", "Gui", "Widgets"]),
    "app": Layer(
        ["src/AppDelegate.*", "src/CameraSwitch.*", "src/OpenEditors.*", "src/RecordingFlow.*", "src/StatusMenu.*",
         "src/Subsystems.*"],
        EVERY_HEADER,
        ["Core", "Gui", "Widgets"]),
    "main": Layer(
        ["src/main.cpp"],
        EVERY_HEADER + ["app", "linux", "x11", "macos"],
        ["Core", "Gui", "Widgets"]),
    # Movies: what can be wrong without a screen, then what speaks to each library, then the rest.
    "movie core": Layer(["tools/screencapture/Movie/Core/*"], ["base"], []),
    "movie screen": Layer(
        ["tools/screencapture/Movie/Screen/*"], ["base", "x11", "movie core"], [],
        libraries=["xcb"]),
    "movie encode": Layer(
        ["tools/screencapture/Movie/Encode/*"], ["base", "movie core", "av"], [],
        libraries=["av"]),
    "movie sound": Layer(
        ["tools/screencapture/Movie/Sound/*"], ["base"], [], libraries=["pulse"]),
    "movie": Layer(
        ["tools/screencapture/Movie/*"],
        ["base", "x11", "capture tool", "av", "movie core", "movie screen", "movie encode",
         "movie sound"],
        []),
    "capture tool": Layer(
        ["tools/screencapture/*"], ["base", "x11"], [], libraries=["xcb", "png"]),
    "gallery": Layer(
        ["tools/gallery/*"], ["base", "support", "model", "kit"], ["Core", "Gui", "Widgets"]),
}

# Libraries that only some layers may know, by how their headers are called.
LIBRARIES = {
    "xcb": ["xcb/*", "X11/*", "xkbcommon/*"],
    "png": ["libdeflate.h", "png.h"],
    "av": ["libav*/*", "libsw*/*"],
    "gstreamer": ["gst/*"],
    "pulse": ["pulse/*"],
    "mpv": ["mpv/*"],
}

OS_MACRO = re.compile(
    r"\b(__linux__|__linux|__gnu_linux__|__unix__|__APPLE__|__MACH__|TARGET_OS_\w+|_WIN32|_WIN64"
    r"|__FreeBSD__|Q_OS_\w+)\b")

# What is there or not by the system decides such things too, whatever macro is asked.
CONDITION = re.compile(r"^[ \t]*#\s*(?:if|ifdef|ifndef)\b[^\n]*", re.MULTILINE)
CONDITION_FREE_FOLDER = "src"

# Where a quoted header is looked for, after the folder of the file that includes it.
HEADER_FOLDERS = ["src", "tools", "tools/screencapture", "tools/gallery"]
LAYERED_FOLDERS = ["src", "tools"]

MEASURED_FOLDERS = ["src", "tools", "tests", "bench"]
LONG = 300
TOO_LONG = 600

SUFFIXES = {".h", ".cpp", ".mm"}

# --- reading -------------------------------------------------------------------------------------

COMMENT_OR_STRING = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"'
    r"|'(?:\\.|[^'\\\n])*'",
    re.DOTALL)
INCLUDE = re.compile(r'^[ \t]*#\s*(?:include|import)\s*(?:<([^>]+)>|"([^"]+)")', re.MULTILINE)


def blank(match):
    return "\n" * match.group().count("\n")


def without_comments(text):
    return COMMENT_OR_STRING.sub(
        lambda match: blank(match) if match.group().startswith("/") else match.group(), text)


def line_of(text, position):
    return text.count("\n", 0, position) + 1


@dataclass
class Include:
    line: int
    angled: str  # the name between < and >, or None
    target: pathlib.Path  # the file that a quoted name means, below ROOT; None when there is none
    name: str  # as it is written


class Source:
    """One file, its path below ROOT, and what it includes."""

    def __init__(self, root, path):
        self.path = path
        text = (root / path).read_text(encoding="utf-8")
        code = without_comments(text)
        self.includes = []
        for match in INCLUDE.finditer(code):
            angled, quoted = match.groups()
            target = find_header(root, path, quoted) if quoted else None
            self.includes.append(
                Include(line_of(code, match.start()), angled, target, angled or quoted))
        bare = COMMENT_OR_STRING.sub(blank, text)
        self.conditions = [line_of(bare, m.start()) for m in CONDITION.finditer(bare)]
        self.os_macros = [(line_of(bare, m.start()), m.group()) for m in OS_MACRO.finditer(bare)]


def find_header(root, path, quoted):
    for folder in [path.parent, *map(pathlib.Path, HEADER_FOLDERS)]:
        candidate = (root / folder / quoted).resolve()
        if candidate.is_file() and candidate.is_relative_to(root):
            return candidate.relative_to(root)
    return None


def files_below(root, folders):
    for folder in folders:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in SUFFIXES and path.is_file():
                yield path.relative_to(root)


def layer_of(path):
    for name, layer in LAYERS.items():
        if any(fnmatch.fnmatchcase(str(path), pattern) for pattern in layer.files):
            return name
    return None


# --- checking ------------------------------------------------------------------------------------


def read_qt_headers(folder):
    """The module of each of Qt's headers: {"QString": "Core", "qstring.h": "Core", ...}"""
    modules = {}
    for module in folder.glob("Qt*"):
        for header in module.iterdir():
            modules[header.name] = module.name.removeprefix("Qt")
    return modules


def qt_module(header, qt_headers):
    """The module of a header, "private" for Qt's private ones, None when it is not Qt's."""
    first, _, rest = header.partition("/")
    if first in ("qpa", "private") or rest.startswith(("private/", "qpa/")):
        return "private"
    if rest and re.fullmatch(r"Qt[A-Z]\w*", first):
        return first.removeprefix("Qt")
    return qt_headers.get(header)


def library_of(header):
    for name, patterns in LIBRARIES.items():
        if any(fnmatch.fnmatchcase(header, pattern) for pattern in patterns):
            return name
    return None


def check_angled(layer_name, header, qt_headers):
    layer = LAYERS[layer_name]
    module = qt_module(header, qt_headers)
    if module is None and re.match(r"Q[A-Z]", header):
        return f"<{header}> looks like Qt's and is none of its headers"
    if module is not None and module not in layer.qt:
        what = "Qt's private headers" if module == "private" else f"Qt{module}"
        return f"{layer_name} may not include {what}: <{header}>"
    library = library_of(header)
    if library is not None and library not in layer.libraries:
        return f"{layer_name} may not include the library {library}: <{header}>"
    return None


def check_quoted(layer_name, include):
    if include.target is None:
        # What moc generates from a source file is included by that file, by its bare name.
        return None if include.name.endswith(".moc") else f'"{include.name}" is no file of ours'
    other = layer_of(include.target)
    # A file that no layer claims is reported by itself.
    if other is None or other == layer_name or other in LAYERS[layer_name].includes:
        return None
    return f'{layer_name} may not include {other}: "{include.name}"'


def check_source(source, qt_headers):
    layer_name = layer_of(source.path)
    if layer_name is None:
        yield f"{source.path}: no layer claims this file"
        return
    for include in source.includes:
        problem = (check_angled(layer_name, include.angled, qt_headers) if include.angled
                   else check_quoted(layer_name, include))
        if problem:
            yield f"{source.path}:{include.line}: {problem}"
    if not LAYERS[layer_name].may_ask_os:
        for line, macro in source.os_macros:
            yield f"{source.path}:{line}: {macro} belongs below src/Platform"
        if source.path.parts[0] == CONDITION_FREE_FOLDER:
            for line in set(source.conditions) - {line for line, _ in source.os_macros}:
                yield f"{source.path}:{line}: conditional code belongs below src/Platform"


def find_cycles(sources):
    """One line for each way back that a walk along the includes of headers comes upon."""
    graph = {s.path: [i.target for i in s.includes if i.target] for s in sources
             if s.path.suffix == ".h"}
    done, trail = set(), []

    def walk(path):
        if path in done or path not in graph:
            return
        if path in trail:
            circle = trail[trail.index(path):] + [path]
            yield "headers in a circle: " + " -> ".join(map(str, circle))
            return
        trail.append(path)
        for target in graph[path]:
            yield from walk(target)
        trail.pop()
        done.add(path)

    for path in graph:
        yield from walk(path)


def check_length(root, path):
    """A problem, and a note; at most one of them."""
    length = len((root / path).read_text(encoding="utf-8").splitlines())
    if length >= TOO_LONG:
        return f"{path}: {length} lines; fewer than {TOO_LONG} are allowed", None
    if length >= LONG:
        return None, f"note: {path}: {length} lines; is it still about one thing?"
    return None, None


def check(root, qt_headers):
    sources = [Source(root, path) for path in files_below(root, LAYERED_FOLDERS)]
    problems, notes = [], []
    for source in sources:
        problems += check_source(source, qt_headers)
    problems += find_cycles(sources)
    for path in files_below(root, MEASURED_FOLDERS):
        problem, note = check_length(root, path)
        problems += [problem] if problem else []
        notes += [note] if note else []
    return sources, problems, notes


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    qt_headers = read_qt_headers(pathlib.Path(sys.argv[2]))
    if not qt_headers:
        sys.exit(f"{sys.argv[2]}: there are no headers of Qt")
    sources, problems, notes = check(pathlib.Path(sys.argv[1]).resolve(), qt_headers)
    if not sources:
        problems.append(f"{sys.argv[1]}: there are no sources")
    for line in notes + problems:
        print(line)
    if problems:
        sys.exit(1)
    print(f"{len(sources)} files keep to their layers")


if __name__ == "__main__":
    main()
