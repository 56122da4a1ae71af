# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Packages opened without a display, in another system's folder."""

import errno

import anywhere_case
from anywhere_case import LAUNCHER, OUTPUT, PACKAGES, AnywhereCase, person
from room import NEWER_CALLS, NO_EXECUTION, READ_ONLY, STRANGER
from windows import Gate


class TerminalTest(AnywhereCase):
    def test_installs(self):
        room = self.room()
        done = self.install(room)
        self.assertEqual(done.output(), OUTPUT)
        self.assertEqual(done.complaints(), [])

    def test_user_whom_the_system_does_not_know(self):
        room = self.room(user=STRANGER)
        done = self.install(room, variables={"HOME": None, "USER": None, "XDG_RUNTIME_DIR": None})
        self.assertEqual(done.complaints(), [])

    def test_environment_of_another_toolkit_and_loader(self):
        self.install(self.room(), variables=anywhere_case.HOSTILE)

    def test_odd_places(self):
        self.assert_installs_from_odd_places()

    def test_older_kernel(self):
        self.install(self.room(), missing_calls=NEWER_CALLS)

    def test_two_at_once(self):
        room = self.room()
        gate = Gate(room.record / "hold")
        first = room.start(LAUNCHER, environment=person())
        gate.wait_reached()
        second, status = room.run(LAUNCHER, environment=person())
        self.assertEqual((status, second.output()), (0, ""))
        self.assertFalse(first.ended())
        gate.open()
        self.assertEqual(first.wait(), 0)
        self.assert_installed(room, person())

    def test_setup_program_of_the_system(self):
        self.need_shell()
        room = self.room()
        done, status = room.run("/packages/Script.app/Contents/Linux/Zephyrkit", environment=person())
        self.assertEqual(status, 0)
        self.assertEqual((room.record / "installed").read_bytes(), (PACKAGES / "Script/Data/product").read_bytes())

    def test_without_process_file_system(self):
        cause = "No folder for temporary files can be made private without /proc"
        texts = {
            "C.UTF-8": "The temporary folder could not be created.",
            "de_DE.UTF-8": "Der temporäre Ordner konnte nicht erstellt werden.",
        }
        for language, words in texts.items():
            told = self.assert_refused(self.room(proc=False), LAUNCHER, 0, LANG=language)
            self.assertIn(cause, told)
            self.assertIn(words, told)

    def test_folder_that_nothing_is_executed_from(self):
        room = self.room((PACKAGES, "/sealed", READ_ONLY | NO_EXECUTION))
        with self.assertRaises(OSError) as refused:
            room.start("/sealed/Plain.app/Contents/Linux/Zephyrkit")
        self.assertEqual(refused.exception.errno, errno.EACCES)
        self.need_shell()
        shell, status = room.run("/bin/sh", "-c", '"$0"', "/sealed/Plain.app/Contents/Linux/Zephyrkit")
        self.assertEqual(status, 126)
        self.assertIn("Permission denied", shell.errors())

    def test_temporary_folder_that_nothing_is_executed_from(self):
        room = self.room(temporary=NO_EXECUTION)
        self.make_cache(room)
        self.install(room)

    def test_no_folder_that_anything_is_executed_from(self):
        room = self.room(temporary=NO_EXECUTION, home=NO_EXECUTION)
        self.assertIn("The temporary folder could not be created.", self.assert_refused(room, LAUNCHER, 0))


if __name__ == "__main__":
    anywhere_case.main()
