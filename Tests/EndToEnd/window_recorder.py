#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Prints what the clients of an X server say of their windows from now on, one line each; the first is `ready`:

- `title WINDOW TEXT`, with line breaks escaped, and `hints WINDOW FLAGS FUNCTIONS` of the window manager's old hints
- `listed WINDOW...`: what the window manager has in charge now
- `mark`, when somebody has set the property ZPK_MARK of the root window

The server keeps the requests themselves for whoever reads them late, when a window may be gone with all it said.
"""

import ctypes
import struct

CHANGE_PROPERTY = 18
ALL_CLIENTS = 3
FROM_CLIENT = 1
START_OF_DATA = 4
# Opcode, mode, length, window, property, type, format, number of units. A request too large for that length, such as
# a picture, has a longer one before the window, which is no property of these.
REQUEST = struct.Struct("=BBHIIIB3xI")
ATOMS = {"_NET_WM_NAME": "title", "_MOTIF_WM_HINTS": "hints", "_NET_CLIENT_LIST": "listed", "ZPK_MARK": "mark"}

x11 = ctypes.CDLL("libX11.so.6")
xtst = ctypes.CDLL("libXtst.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
x11.XInternAtom.restype = ctypes.c_ulong
xtst.XRecordCreateContext.restype = ctypes.c_ulong


class Range(ctypes.Structure):
    """XRecordRange, of which the requests of the core protocol alone are asked for."""
    _fields_ = [("first", ctypes.c_ubyte), ("last", ctypes.c_ubyte), ("others", ctypes.c_ubyte * 30)]


class Intercepted(ctypes.Structure):
    _fields_ = [("base", ctypes.c_ulong), ("time", ctypes.c_ulong), ("sequence", ctypes.c_ulong),
                ("category", ctypes.c_int), ("is_swapped", ctypes.c_int), ("data", ctypes.c_void_p),
                ("units", ctypes.c_ulong)]


Callback = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.POINTER(Intercepted))


def told(kind, window, form, contents):
    if kind == "title":
        return "%#x %s" % (window, contents.decode(errors="replace").replace("\\", "\\\\").replace("\n", "\\n"))
    if form != 32:
        return ""
    numbers = ["%#x" % number for (number,) in struct.iter_unpack("=I", contents)]
    return " ".join(numbers if kind == "listed" else ["%#x" % window, *numbers[:2]])


def main():
    control, data = (ctypes.c_void_p(x11.XOpenDisplay(None)) for _ in range(2))
    kinds = {x11.XInternAtom(control, name.encode(), 0): kind for name, kind in ATOMS.items()}

    @Callback
    def look(_, found):
        request = ctypes.string_at(found[0].data, found[0].units * 4) if found[0].data else b""
        if found[0].category == START_OF_DATA:
            print("ready", flush=True)
        elif found[0].category == FROM_CLIENT and len(request) >= REQUEST.size and request[0] == CHANGE_PROPERTY:
            _, _, _, window, atom, _, form, count = REQUEST.unpack_from(request)
            if atom in kinds:
                contents = request[REQUEST.size:][:count * form // 8]
                print(kinds[atom], told(kinds[atom], window, form, contents), flush=True)
        xtst.XRecordFreeData(found)

    wanted = Range(CHANGE_PROPERTY, CHANGE_PROPERTY)
    clients = (ctypes.c_ulong * 1)(ALL_CLIENTS)
    ranges = (ctypes.POINTER(Range) * 1)(ctypes.pointer(wanted))
    context = xtst.XRecordCreateContext(control, 0, clients, 1, ranges, 1)
    x11.XSync(control, 0)
    xtst.XRecordEnableContext(data, ctypes.c_ulong(context), look, None)


if __name__ == "__main__":
    main()
