# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Packages opened at an X server, in another system's folder."""

import contextlib
import os
import subprocess

import anywhere_case
from anywhere_case import HOSTILE, FONTS, KEYBOARDS, AnywhereCase, HeldRun, person
from picture import Picture, reference
from room import NEWER_CALLS, STRANGER
from support import wait_until, x_server

PROGRESS = "Extracting installation files"
REFUSED = "/packages/Refused.app/Contents/Linux/Zephyrkit"


class WindowsTest(AnywhereCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        with contextlib.ExitStack() as stack:
            cls.display = stack.enter_context(x_server(window_manager=True))
            cls.addClassCleanup(stack.pop_all().close)

    def socket(self):
        path = "/tmp/.X11-unix/X" + self.display[1:]
        return path, path, 0

    def desk(self, **options):
        """A room with the X server's socket in it."""
        return self.room(self.socket(), **options)

    def xdotool(self, *words):
        return subprocess.run(
            ["xdotool", *words], env=dict(os.environ, DISPLAY=self.display), capture_output=True, text=True
        ).stdout.split()

    def look(self, title, name):
        """The picture of the window, once there is one."""
        found = self.xdotool("search", "--onlyvisible", "--name", "^" + title)
        if not found:
            return Picture(b"")
        picture = Picture.of_window(self.display, found[-1])
        picture.keep("%s-%s" % (name, anywhere_case.ROOT))
        return picture

    def wait_for_picture(self, run, title, name):
        """Until the window looks as it does on bookworm; nothing says when it is painted."""
        expected = reference(name)
        run.wait_until(lambda: self.look(title, name).difference(expected) < 0.1)

    def make_font_notes(self, room):
        """What the system's own library has noted of fonts, in a form of a version that nobody knows."""
        self.make_cache(room)
        notes = room.home / ".cache/fontconfig"
        notes.mkdir()
        for name in ("CACHEDIR.TAG", "4c599c202bc5c08e2d34565a40eac3b2-le64.cache-11", "%032x-le64.cache-8" % 0):
            (notes / name).write_bytes(b"notes of " + name.encode())
        if os.geteuid() == 0:
            for path in (notes, *notes.iterdir()):
                os.chown(path, room.user, room.user)

    # Tests

    def test_progress_window_in_the_carried_font(self):
        run = HeldRun(self, self.desk(hidden=FONTS + KEYBOARDS), DISPLAY=self.display)
        self.wait_for_picture(run, PROGRESS, "progress")
        run.finish()

    def test_progress_window_in_the_fonts_of_the_system(self):
        room = self.desk()
        self.make_font_notes(room)
        run = HeldRun(self, room, DISPLAY=self.display)
        expected = reference("progress")
        run.wait_until(lambda: self.look(PROGRESS, "own-fonts").resembles(expected))
        run.finish()

    def test_alert_is_answered_by_a_key(self):
        room = self.desk(hidden=FONTS)
        before = self.traces(room)
        process = room.start(REFUSED, environment=person(DISPLAY=self.display))
        expected = reference("alert")
        wait_until(lambda: self.look("Refused", "alert").difference(expected) < 0.1 or process.ended(), 60)
        self.assertFalse(process.ended(), process.errors())
        self.xdotool("key", "Return")
        self.assertEqual(process.wait(), 0)
        room.settle()
        self.assertEqual(self.traces(room), before)
        self.assertEqual(list(room.record.iterdir()), [])

    def test_environment_of_another_toolkit_and_loader(self):
        run = HeldRun(self, self.desk(hidden=FONTS), DISPLAY=self.display, **HOSTILE)
        self.wait_for_picture(run, PROGRESS, "progress")
        run.finish()

    def test_odd_places(self):
        self.assert_installs_from_odd_places(self.socket(), DISPLAY=self.display)

    def test_preloaded_library_of_the_system(self):
        if not anywhere_case.ROOT.endswith("-desktop"):
            self.skipTest("there is no such library in this root")
        library = "/usr/lib/x86_64-linux-gnu/libgtk-3.so.0"
        room = self.desk()
        done, status = room.run(
            "/packages/Script.app/Contents/Linux/Zephyrkit",
            environment=person(DISPLAY=self.display, LD_PRELOAD=library),
        )
        self.assertEqual(status, 0)
        self.assertEqual(done.complaints(), [])
        self.assertIn("LD_PRELOAD=" + library, (room.record / "variables").read_text().splitlines())
        self.assertIn("/libgtk-3.so.0", (room.record / "maps").read_text())

    def test_older_kernel(self):
        done = self.install(self.desk(), variables={"DISPLAY": self.display}, missing_calls=NEWER_CALLS)
        self.assertEqual(done.complaints(), [])

    def test_user_whom_the_system_does_not_know(self):
        room = self.desk(user=STRANGER)
        gone = {"HOME": None, "USER": None, "XDG_RUNTIME_DIR": None}
        done = self.install(room, variables={"DISPLAY": self.display, **gone})
        self.assertEqual(done.complaints(), [])

    def test_nothing_stays_of_the_toolkit_without_a_runtime_folder(self):
        self.install(self.desk(), variables={"DISPLAY": self.display, "XDG_RUNTIME_DIR": None})


if __name__ == "__main__":
    anywhere_case.main()
