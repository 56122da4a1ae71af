#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Prints what happens on an X11 desktop from now on, one line each; the first is `ready`:

- a whole message about a program's start, as it was sent
- the name of a property of the root window that changes
- `mapped WINDOW`, `sized WINDOW WIDTHxHEIGHT` of what stands on the root window
"""

import ctypes

SUBSTRUCTURE_NOTIFY_MASK = 1 << 19
PROPERTY_CHANGE_MASK = 1 << 22
MAP_NOTIFY = 19
CONFIGURE_NOTIFY = 22
PROPERTY_NOTIFY = 28
CLIENT_MESSAGE = 33

x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
x11.XGetAtomName.restype = ctypes.c_char_p


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("is_sent", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("atom", ctypes.c_ulong),
                ("format", ctypes.c_int), ("gap", ctypes.c_int), ("data", ctypes.c_ubyte * 20)]


class PropertyChange(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("is_sent", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("atom", ctypes.c_ulong)]


class Placement(ctypes.Structure):
    """The beginning of a map event, too."""
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("is_sent", ctypes.c_int),
                ("display", ctypes.c_void_p), ("event", ctypes.c_ulong), ("window", ctypes.c_ulong),
                ("x", ctypes.c_int), ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int)]


class Event(ctypes.Union):
    _fields_ = [("type", ctypes.c_int), ("message", ClientMessage), ("change", PropertyChange), ("place", Placement),
                ("room", ctypes.c_long * 24)]


def main():
    display = ctypes.c_void_p(x11.XOpenDisplay(None))
    mask = PROPERTY_CHANGE_MASK | SUBSTRUCTURE_NOTIFY_MASK
    x11.XSelectInput(display, ctypes.c_ulong(x11.XDefaultRootWindow(display)), ctypes.c_long(mask))
    x11.XSync(display, 0)
    print("ready", flush=True)
    event = Event()
    said = {}
    while True:
        x11.XNextEvent(display, ctypes.byref(event))
        if event.type == PROPERTY_NOTIFY:
            print(x11.XGetAtomName(display, ctypes.c_ulong(event.change.atom)).decode(), flush=True)
        if event.type == MAP_NOTIFY:
            print("mapped", event.place.window, flush=True)
        if event.type == CONFIGURE_NOTIFY:
            print("sized", event.place.window, "%dx%d" % (event.place.width, event.place.height), flush=True)
        if event.type == CLIENT_MESSAGE:
            kind = x11.XGetAtomName(display, ctypes.c_ulong(event.message.atom))
            if kind == b"_NET_STARTUP_INFO_BEGIN":
                said[event.message.window] = b""
            elif kind != b"_NET_STARTUP_INFO" or event.message.window not in said:
                continue
            said[event.message.window] += bytes(event.message.data)
            if b"\0" in said[event.message.window]:
                print(said.pop(event.message.window).split(b"\0")[0].decode(), flush=True)


if __name__ == "__main__":
    main()
