# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Packages of one file, opened in another system's folder."""

import contextlib
import errno
import os

import anywhere_case
from anywhere_case import OUTPUT, PACKAGES, AnywhereCase, person
from room import NEWER_CALLS, NO_EXECUTION, READ_ONLY, STRANGER
from support import x_server
from windows import Gate

RUN_FILE = "/packages/Plain.run"


class RunFileTest(AnywhereCase):
    def test_installs(self):
        done = self.install(self.room(), RUN_FILE)
        self.assertEqual(done.output(), OUTPUT)
        self.assertEqual(done.complaints(), [])

    def test_installs_with_windows(self):
        with contextlib.ExitStack() as stack:
            display = stack.enter_context(x_server(window_manager=True))
            socket = "/tmp/.X11-unix/X" + display[1:]
            done = self.install(self.room((socket, socket, 0)), RUN_FILE, variables={"DISPLAY": display})
        self.assertNotIn("no windows", done.errors())
        # What the terminal would show of the progress, a window has shown.
        self.assertEqual(done.output(), "setup: ran\n")

    def test_user_whom_the_system_does_not_know(self):
        gone = {"HOME": None, "USER": None, "XDG_RUNTIME_DIR": None}
        self.install(self.room(user=STRANGER), RUN_FILE, variables=gone)

    def test_older_kernel(self):
        self.install(self.room(), RUN_FILE, missing_calls=NEWER_CALLS)

    def test_odd_name(self):
        name = os.fsdecode(b"/a b:c;$LIB\n\xff.run")
        self.install(self.room((PACKAGES / "Plain.run", name, READ_ONLY)), name)

    def test_two_at_once(self):
        room = self.room()
        gate = Gate(room.record / "hold")
        first = room.start(RUN_FILE, environment=person())
        gate.wait_reached()
        second, status = room.run(RUN_FILE, environment=person())
        self.assertEqual((status, second.output()), (0, ""))
        self.assertFalse(first.ended())
        gate.open()
        self.assertEqual(first.wait(), 0)
        self.assert_installed(room, person())

    def test_without_process_file_system(self):
        told = self.assert_refused(self.room(proc=False), RUN_FILE, 1)
        self.assertEqual(told, "Zephyrkit: %s: No folder for temporary files can be made private without /proc" % RUN_FILE)

    def test_folder_that_nothing_is_executed_from(self):
        room = self.room((PACKAGES, "/sealed", READ_ONLY | NO_EXECUTION))
        with self.assertRaises(OSError) as refused:
            room.start("/sealed/Plain.run")
        self.assertEqual(refused.exception.errno, errno.EACCES)
        self.need_shell()
        shell, status = room.run("/bin/sh", "-c", '"$0"', "/sealed/Plain.run")
        self.assertEqual(status, 126)
        self.assertIn("Permission denied", shell.errors())

    def test_temporary_folder_that_nothing_is_executed_from(self):
        room = self.room(temporary=NO_EXECUTION)
        self.make_cache(room)
        self.install(room, RUN_FILE)

    def test_no_folder_that_anything_is_executed_from(self):
        room = self.room(temporary=NO_EXECUTION, home=NO_EXECUTION)
        self.assertIn("No safe folder for temporary files", self.assert_refused(room, RUN_FILE, 1))


if __name__ == "__main__":
    anywhere_case.main()
