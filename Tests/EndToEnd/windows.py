"""A desktop for one test: an X server with a window manager, a session bus and its accessibility bus."""

import contextlib
import json
import os
import pathlib
import subprocess
import sys

from support import wait_until, x_server

HERE = pathlib.Path(__file__).parent


class Desktop:
    """What a person at this desktop can see and do."""

    def __init__(self, display, bus):
        self.variables = {
            "DISPLAY": display,
            "DBUS_SESSION_BUS_ADDRESS": bus,
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
        }
        self.environment = dict(os.environ, **self.variables)

    def windows(self, process):
        """The accessible windows of the process, each a dictionary with its children."""
        found = subprocess.run(
            [sys.executable, HERE / "accessible_tree.py", str(process.pid)],
            env=self.environment,
            capture_output=True,
            text=True,
            timeout=30,
        )
        try:
            return json.loads(found.stdout)
        except ValueError:
            return []

    def wait_for_window(self, process, accepts, seconds=30):
        """The first window of the process that `accepts` says yes to; fails when the process ends before."""

        def look():
            for window in self.windows(process):
                if accepts(window):
                    return window
            if process.poll() is not None:
                raise AssertionError("the launcher ended with %s instead" % process.returncode)
            return None

        return wait_until(look, seconds)

    def key(self, *keys):
        subprocess.run(["xdotool", "key", "--clearmodifiers", *keys], env=self.environment, check=True)

    def screenshot(self, path):
        subprocess.run(["import", "-window", "root", str(path)], env=self.environment, check=True)

    def titles(self):
        """The titles of all windows that the X server shows."""
        found = subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--name", ".", "getwindowname", "%@"],
            env=self.environment,
            capture_output=True,
            text=True,
        )
        return found.stdout.splitlines()


def walk(item):
    yield item
    for child in item.get("children", []):
        yield from walk(child)


def items(window, role):
    """The items of a role that are on the screen."""
    return [item for item in walk(window) if item["role"] == role and "showing" in item["states"]]


def texts(window):
    """Every text that a reader hears in the window."""
    return [text for item in walk(window) for text in (item.get("text"), item["name"]) if text]


@contextlib.contextmanager
def desktop(screen="1280x800x24"):
    with x_server(window_manager=True, screen=screen) as display:
        bus = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--print-address=1"],
            env=dict(os.environ, DISPLAY=display),
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            text=True,
        )
        try:
            yield Desktop(display, bus.stdout.readline().strip())
        finally:
            bus.terminate()
            bus.wait()
