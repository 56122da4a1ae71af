# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""A desktop for tests: an X server with a window manager, a session bus and its accessibility bus."""

import contextlib
import ctypes
import json
import os
import pathlib
import re
import struct
import subprocess

from support import wait_until, x_server

HERE = pathlib.Path(__file__).parent
# From the upper right corner of a window to the middle of the close box in the title bar above it.
CLOSE_BOX_OFFSET = 10

MOTIF_HAS_FUNCTIONS = 1
MOTIF_ALL_OR_CLOSE = 1 | 1 << 5


class Desktop:
    """What a person at this desktop can see and do."""

    def __init__(self, display, bus):
        self.variables = {
            "DISPLAY": display,
            "DBUS_SESSION_BUS_ADDRESS": bus,
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
        }
        self.environment = dict(os.environ, LC_ALL="C.UTF-8", **self.variables)
        self._reader = None

    def windows(self, process):
        """The accessible windows of the process number, each a dictionary with its children."""
        if self._reader is None:
            self._reader = subprocess.Popen(
                [HERE / "accessible_tree.py"],
                env=self.environment,
                stdin=subprocess.PIPE,
                stdout=subprocess.PIPE,
                stderr=subprocess.DEVNULL,
                text=True,
            )
        self._reader.stdin.write("%d\n" % process)
        self._reader.stdin.flush()
        return json.loads(self._reader.stdout.readline())

    def close(self):
        if self._reader is not None:
            self._reader.terminate()
            self._reader.communicate()

    def run(self, *command):
        done = subprocess.run(command, env=self.environment, capture_output=True, text=True)
        return done.stdout

    def key(self, *keys):
        subprocess.run(["xdotool", "key", "--clearmodifiers", *keys], env=self.environment, check=True)

    def click_close_box(self, title):
        """Presses the close box that the window manager draws for the window."""
        window = self.run("xdotool", "search", "--onlyvisible", "--name", "^%s$" % title).split()[-1]
        shown = self.run("xwininfo", "-id", window)
        left, top, width = (
            int(re.search(label + r": +(-?\d+)", shown)[1])
            for label in ("Absolute upper-left X", "Absolute upper-left Y", "Width")
        )
        right = left + width
        self.run("xdotool", "mousemove", str(right - CLOSE_BOX_OFFSET), str(top - CLOSE_BOX_OFFSET), "click", "1")

    def click(self, item):
        """Presses the middle of an accessible item."""
        x, y, width, height = item["bounds"]
        self.run("xdotool", "mousemove", str(x + width // 2), str(y + height // 2), "click", "1")

    def listed(self):
        """The windows that the window manager has in charge, by their numbers."""
        return listed_windows(self.run("xprop", "-root", "-notype", "_NET_CLIENT_LIST"))

    def allowed(self, window):
        """What the window manager lets a person do with the window, and shows in its frame: `CLOSE`, `MOVE`."""
        shown = self.run("xprop", "-id", window, "-notype", "_NET_WM_ALLOWED_ACTIONS")
        return set(re.findall(r"_NET_WM_ACTION_(\w+)", shown))

    def about(self, window):
        """The title, and whether the window can be closed; an empty title when it is gone."""
        # The title last: with a title, the other answer is sure.
        shown = self.run("xprop", "-id", window, "-notype", "_MOTIF_WM_HINTS", "_NET_WM_NAME")
        title = re.search(r'^_NET_WM_NAME = "(.*)"$', shown, re.MULTILINE)
        hints = re.search(r"^_MOTIF_WM_HINTS = (\w+), (\w+)", shown, re.MULTILINE)
        flags, functions = (int(number, 16) for number in hints.groups()) if hints else (0, 0)
        return title[1] if title else "", can_close(flags, functions)

    def pixels(self, x, y, width, height, form="rgb"):
        """That part of the screen, in a form that ImageMagick knows."""
        area = "%dx%d+%d+%d" % (width, height, x, y)
        command = ["import", "-window", "root", "-crop", area, form + ":-"]
        return subprocess.run(command, env=self.environment, check=True, capture_output=True).stdout

    def colours(self, x, y, width, height):
        """How many colours that part of the screen has: 1 where nothing is drawn."""
        picture = self.pixels(x, y, width, height, "png")
        return int(subprocess.run(["identify", "-format", "%k", "-"], input=picture, capture_output=True).stdout)

    def screenshot(self, path):
        subprocess.run(["import", "-window", "root", str(path)], env=self.environment, check=True)


class WindowLog:
    """What came on the screen from now on, in its order: title of each window, and whether it can be closed."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._recorder = subprocess.Popen(
            [HERE / "window_recorder.py"], env=desktop.environment, stdout=subprocess.PIPE, text=True
        )
        if self._recorder.stdout.readline() != "ready\n":
            raise AssertionError("nothing is recorded")
        self._before = desktop.listed()

    def stop(self):
        self._desktop.run("xprop", "-root", "-format", "ZPK_MARK", "8s", "-set", "ZPK_MARK", "end")
        titles, hints, found = {}, {}, []
        for line in iter(self._recorder.stdout.readline, ""):
            kind, *words = line.rstrip("\n").split(" ", 2)
            if kind == "mark":
                break
            if kind == "title":
                titles[words[0]] = words[1]
            elif kind == "hints":
                hints[words[0]] = [int(number, 16) for number in words[1].split()]
            else:
                found += [window for window in " ".join(words).split() if window not in self._before + found]
        else:
            raise AssertionError("what was recorded has no end")
        self._recorder.terminate()
        self._recorder.communicate()
        return [(titles.get(window, ""), can_close(*hints.get(window, (0, 0)))) for window in found]


class FolderWatch:
    """Says when a folder has come and gone: the kernel keeps each change until somebody asks."""

    _LIBC = ctypes.CDLL(None, use_errno=True)
    _CAME = 0x80 | 0x100  # IN_MOVED_TO, IN_CREATE
    _WENT = 0x40 | 0x200  # IN_MOVED_FROM, IN_DELETE
    _EVENT = struct.Struct("iIII")

    def __init__(self, path):
        self._name = os.fsencode(path.name)
        self._events = self._LIBC.inotify_init1(os.O_NONBLOCK | os.O_CLOEXEC)
        watched = self._LIBC.inotify_add_watch(self._events, os.fsencode(path.parent), self._CAME | self._WENT)
        if self._events < 0 or watched < 0:
            raise OSError(ctypes.get_errno(), "cannot watch", str(path.parent))
        self._states = [os.path.lexists(path)]

    def states(self):
        """Whether the folder was there, one entry for each change until now: [False, True, False]."""
        while self._events is not None:
            try:
                block = os.read(self._events, 65536)
            except BlockingIOError:
                break
            while block:
                _, mask, _, length = self._EVENT.unpack_from(block)
                name = block[self._EVENT.size:self._EVENT.size + length].rstrip(b"\0")
                block = block[self._EVENT.size + length:]
                if name == self._name and bool(mask & self._CAME) != self._states[-1]:
                    self._states.append(not self._states[-1])
        return self._states

    def stop(self):
        states = self.states()
        os.close(self._events)
        self._events = None
        return states


class Gate:
    """Holds a program at one place until the test lets it go on; the program reads from `path`."""

    def __init__(self, path):
        self.path = path
        os.mkfifo(path)
        self._descriptor = None

    def wait_reached(self, seconds=60):
        def reach():
            try:
                self._descriptor = os.open(self.path, os.O_WRONLY | os.O_NONBLOCK)
            except OSError:
                return False
            return True

        wait_until(reach, seconds)

    def open(self):
        os.close(self._descriptor)
        self._descriptor = None


class GlobalMenu:
    """A bar of the desktop that shows the menus of all applications, whatever window is in front."""

    # Which desktop it is decides whether the toolkit looks for such a bar.
    variables = {"XDG_CURRENT_DESKTOP": "GNOME"}

    def __init__(self, desktop):
        self._bar = subprocess.Popen(
            [HERE / "menu_registrar.py"],
            env=desktop.environment,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )
        if self._bar.stdout.readline() != "ready\n":
            raise AssertionError("there is no bar for the menus")

    def choose(self, title):
        """Chooses an item once it is there."""

        def chosen():
            self._bar.stdin.write(title + "\n")
            self._bar.stdin.flush()
            return self._bar.stdout.readline() == "chosen\n"

        wait_until(chosen, 60)

    def close(self):
        self._bar.terminate()
        self._bar.communicate()


def can_close(flags, functions):
    """Whether the window manager is to let a person close a window with these hints."""
    return not flags & MOTIF_HAS_FUNCTIONS or bool(functions & MOTIF_ALL_OR_CLOSE)


def listed_windows(line):
    """The windows of a line such as `_NET_CLIENT_LIST: window id # 0x1, 0x2`."""
    return line.partition("#")[2].replace(",", " ").split()


def walk(item):
    yield item
    for child in item["children"]:
        yield from walk(child)


def items(window, role):
    """The items of a role that are on the screen."""
    return [item for item in walk(window) if item["role"] == role and "showing" in item["states"]]


def focused(window):
    """The item that takes the keys, as (role, name)."""
    for item in walk(window):
        # A panel says so too, for a button inside it.
        if {"focused", "focusable"} <= set(item["states"]):
            return item["role"], item["name"]
    return None


@contextlib.contextmanager
def desktop(screen="1280x800x24", manager=None):
    """With openbox, or with the window manager that a command starts."""
    with x_server(window_manager=manager is None, screen=screen) as display:
        bus = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--print-address=1"],
            env=dict(os.environ, DISPLAY=display),
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            text=True,
        )
        found = Desktop(display, bus.stdout.readline().strip())
        process = None
        try:
            if manager is not None:
                process = subprocess.Popen(
                    manager, env=found.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
                )
                wait_until(lambda: "#" in found.run("xprop", "-root", "-notype", "_NET_SUPPORTING_WM_CHECK"), 60)
            yield found
        finally:
            if process is not None:
                process.terminate()
                process.wait()
            found.close()
            bus.terminate()
            bus.wait()
            bus.stdout.close()
