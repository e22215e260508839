#!/usr/bin/env python3
"""Waits until a window manager, a compositor or a tray of the display $DISPLAY is ready.

usage: await_x11.py SECONDS THING...

THING is `window-manager`, or the name of a selection that somebody must own, as compositors and
trays do to announce themselves. Ends with 1 and one line when a thing is still missing after
SECONDS, or when the display goes away.
"""

import ctypes
import sys
import time

POLL_SECONDS = 0.005


class Display:
    """The few calls of Xlib that tell who has announced itself."""

    def __init__(self):
        self.xlib = xlib = ctypes.CDLL("libX11.so.6")
        window = atom = ctypes.c_ulong
        xlib.XOpenDisplay.restype = ctypes.c_void_p
        xlib.XOpenDisplay.argtypes = [ctypes.c_char_p]
        xlib.XDefaultRootWindow.restype = window
        xlib.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
        xlib.XInternAtom.restype = atom
        xlib.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
        xlib.XGetSelectionOwner.restype = window
        xlib.XGetSelectionOwner.argtypes = [ctypes.c_void_p, atom]
        xlib.XFree.argtypes = [ctypes.c_void_p]
        xlib.XGetWindowProperty.argtypes = [
            ctypes.c_void_p, window, atom, ctypes.c_long, ctypes.c_long, ctypes.c_int, atom,
            ctypes.POINTER(atom), ctypes.POINTER(ctypes.c_int), ctypes.POINTER(ctypes.c_ulong),
            ctypes.POINTER(ctypes.c_ulong), ctypes.POINTER(ctypes.c_void_p)]
        self.connection = xlib.XOpenDisplay(None)
        if not self.connection:
            sys.exit("await_x11.py: no X server at the display of this environment")
        self.root = xlib.XDefaultRootWindow(self.connection)

    def atom(self, name):
        return self.xlib.XInternAtom(self.connection, name.encode(), 0)

    def selection_is_owned(self, name):
        return bool(self.xlib.XGetSelectionOwner(self.connection, self.atom(name)))

    def root_has_property(self, name):
        kind, form = ctypes.c_ulong(), ctypes.c_int()
        count, rest, data = ctypes.c_ulong(), ctypes.c_ulong(), ctypes.c_void_p()
        self.xlib.XGetWindowProperty(
            self.connection, self.root, self.atom(name), 0, 1, 0, 0, ctypes.byref(kind),
            ctypes.byref(form), ctypes.byref(count), ctypes.byref(rest), ctypes.byref(data))
        if data:
            self.xlib.XFree(data)
        return count.value > 0

    def is_ready(self, thing):
        if thing == "window-manager":
            return self.root_has_property("_NET_SUPPORTING_WM_CHECK")
        return self.selection_is_owned(thing)


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    seconds, missing = float(sys.argv[1]), sys.argv[2:]
    display = Display()
    deadline = time.monotonic() + seconds
    while True:
        missing = [thing for thing in missing if not display.is_ready(thing)]
        if not missing:
            return
        if time.monotonic() > deadline:
            sys.exit(f"not ready after {seconds:g} s: {', '.join(missing)}")
        time.sleep(POLL_SECONDS)


main()
