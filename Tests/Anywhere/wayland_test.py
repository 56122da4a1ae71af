# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Packages opened at a Wayland compositor, in another system's folder."""

import os
import pathlib
import shutil
import subprocess
import tempfile

import anywhere_case
from anywhere_case import FONTS, HERE, KEYBOARDS, AnywhereCase, HeldRun
from picture import Picture, reference
from room import NEWER_CALLS
from support import wait_until

BACKGROUND = "#204060"


class Compositor:
    """A compositor without a screen, whose picture anybody may take."""

    def __init__(self):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-weston-"))
        self.socket = self._folder / "wayland-0"
        self._environment = dict(os.environ, XDG_RUNTIME_DIR=str(self._folder), WAYLAND_DISPLAY="wayland-0")
        self._log = open(self._folder / "log", "w")
        words = "--backend=headless-backend.so --use-pixman --debug --width=800 --height=600 --socket=wayland-0"
        self._process = subprocess.Popen(
            ["weston", "--config=%s" % (HERE / "weston.ini"), *words.split()],
            env=self._environment,
            stdout=self._log,
            stderr=self._log,
        )
        wait_until(lambda: self.picture().has_only(BACKGROUND), 30)
        # For a user of another number, too.
        self.socket.chmod(0o777)

    def picture(self):
        """The whole screen."""
        subprocess.run(["weston-screenshooter"], env=self._environment, cwd=self._folder, capture_output=True)
        for path in self._folder.glob("*.png"):
            data = path.read_bytes()
            path.unlink()
            return Picture(data)
        return Picture(b"")

    def close(self):
        self._process.terminate()
        self._process.wait()
        self._log.close()
        shutil.rmtree(self._folder)


class WaylandTest(AnywhereCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.compositor = Compositor()
        cls.addClassCleanup(cls.compositor.close)

    def desk(self, **options):
        """A room with the compositor's socket in it."""
        return self.room((self.compositor.socket, "/run/user/1000/wayland-0", 0), **options)

    def look(self, name):
        window = self.compositor.picture().without(BACKGROUND)
        window.keep("%s-%s" % (name, anywhere_case.ROOT))
        return window

    def test_progress_window_in_the_carried_font(self):
        run = HeldRun(self, self.desk(hidden=FONTS + KEYBOARDS), WAYLAND_DISPLAY="wayland-0")
        expected = reference("progress")
        run.wait_until(lambda: self.look("wayland-progress").difference(expected) < 0.1)
        run.finish()

    def test_progress_window_in_the_fonts_of_the_system(self):
        run = HeldRun(self, self.desk(), WAYLAND_DISPLAY="wayland-0")
        run.wait_until(lambda: self.look("wayland-own-fonts").resembles(reference("progress")))
        run.finish()

    def test_older_kernel(self):
        done = self.install(self.desk(), variables={"WAYLAND_DISPLAY": "wayland-0"}, missing_calls=NEWER_CALLS)
        self.assertNotIn("no windows", done.errors())


if __name__ == "__main__":
    anywhere_case.main()
