# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Setup programs that cannot be started: what is told, with windows and without, and what is left."""

import glob
import os
import struct
import subprocess
import unittest

from support import STAGING_NAME, PackageTestCase, write
from windows_case import LANGUAGES, WindowTestCase, string_table

EM_X86_64 = 62
EM_AARCH64 = 183
PT_INTERP = 3


def machine_program(machine, loader):
    """The beginning of a 64-bit program: its header, one segment, and the path of its loader."""
    identity = b"\x7fELF" + bytes([2, 1, 1]) + bytes(9)
    header = identity + struct.pack("<HHIQQQIHHHHHH", 2, machine, 1, 0, 64, 0, 0, 64, 56, 1, 0, 0, 0)
    path = os.fsencode(loader) + b"\0"
    return header + struct.pack("<IIQQQQQQ", PT_INTERP, 4, 120, 0, 0, len(path), len(path), 1) + path


def emulates(processor):
    return bool(glob.glob("/proc/sys/fs/binfmt_misc/*%s*" % processor))


# Name of the row, what the setup program holds, and the reason.
PROGRAMS = {
    "interpreter": (b"#!/no/such/interpreter\n", "Its interpreter /no/such/interpreter is missing"),
    "carriage return": (b"#!/bin/sh\r\nexit 0\r\n", "Its interpreter /bin/sh\\x0d is missing"),
    "command": (b"#!\x1b]0;title\x07\n", "Its interpreter \\x1b]0;title\\x07 is missing"),
    "loader": (machine_program(EM_X86_64, "/no/such/ld.so"), "Its loader /no/such/ld.so is missing"),
    "text": (b"touch ran\n", "Neither a program nor a script that names its interpreter"),
    "empty": (b"", "The file is empty"),
}


class SetupStartTest(PackageTestCase):
    """On the terminal."""

    def setUp(self):
        super().setUp()
        self.setup = self.source / "Data/setup"
        self.startup()

    def assert_told(self, reason, program=None, **env):
        """Packs what is there, and runs it: one line with the reason, the alert's text, status 1."""
        bundle = self.pack("TestSetup.app", "--force")
        done = self.launch(bundle, expect=1, **env)
        program = program or "%s/%s/Data/setup" % (self.temporary, STAGING_NAME)
        lines = [line for line in done.stderr.splitlines() if line.startswith("Zephyrkit: ")]
        self.assertEqual(lines, ["Zephyrkit: cannot start %s: %s" % (program, reason)])
        alert = string_table(bundle, "en")["ERROR_INIT"] + "\n"
        self.assertTrue(done.stderr.endswith(alert), done.stderr)
        self.assertFalse((self.folder / "ran").exists(), "a shell ran it")

    def test_each_reason_that_the_program_holds(self):
        for name, (contents, reason) in PROGRAMS.items():
            with self.subTest(name):
                write(self.setup, contents, 0o755)
                self.assert_told(reason)

    @unittest.skipIf(emulates("aarch64"), "this machine runs programs for that processor")
    def test_another_processor(self):
        write(self.setup, machine_program(EM_AARCH64, "/lib/ld-linux-aarch64.so.1"), 0o755)
        self.assert_told("Made for another processor: AArch64")

    def test_not_executable(self):
        write(self.setup, "#!/bin/sh\n", 0o644)
        self.assert_told("Not executable")

    def test_folder(self):
        self.setup.mkdir()
        self.assert_told("Is a directory")

    def test_link_to_itself(self):
        self.setup.symlink_to("setup")
        self.assert_told("Too many levels of symbolic links")

    def test_no_such_file(self):
        self.assert_told("No such file or directory")

    @unittest.skipUnless(os.geteuid() == 0, "mounting a file system takes root")
    def test_file_system_without_execution(self):
        mounted = self.folder / "mounted"
        mounted.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "-o", "noexec", "none", mounted], check=True)
        self.addCleanup(subprocess.run, ["umount", mounted], check=True)
        program = write(mounted / "setup", "#!/bin/sh\n", 0o755)
        self.startup(str(program))
        self.assert_told("On a file system that is mounted noexec", program)

    def test_text_is_in_the_persons_language(self):
        write(self.setup, b"", 0o755)
        bundle = self.pack("TestSetup.app", "--force")
        for language, variables in LANGUAGES.items():
            with self.subTest(language):
                done = self.launch(bundle, expect=1, **variables)
                self.assertIn(string_table(bundle, language)["ERROR_INIT"], done.stderr)


class UnpackingTest(PackageTestCase):
    """The archive tool fails: the person is told nothing, and a line says why."""

    def own_lines(self, bundle):
        done = self.launch(bundle)
        self.assertNotIn(string_table(bundle, "en")["ERROR_INIT"], done.stderr)
        return [line for line in done.stderr.splitlines() if line.startswith("Zephyrkit: cannot unpack")]

    def expected(self, bundle, reason, *archives):
        tool = bundle / "Contents/Helpers/ditto"
        return [
            "Zephyrkit: cannot unpack %s: %s: %s" % (bundle / "Contents/Resources" / archive, tool, reason)
            for archive in archives
        ]

    def test_damaged_payload(self):
        bundle = self.simple_package()
        write(bundle / "Contents/Resources/Data.datx", "no archive")
        self.assertEqual(self.own_lines(bundle), self.expected(bundle, "Ended with status 1", "Data.datx"))
        self.assertEqual(self.records(), [])

    def test_missing_archive_is_no_line(self):
        bundle = self.simple_package()
        (bundle / "Contents/Resources/Info.datx").unlink()
        self.assertEqual(self.own_lines(bundle), [])
        self.record()

    def test_tool_that_dies_or_cannot_start(self):
        self.recorder()
        self.startup()
        for contents, reason in (
            ("#!/bin/sh\nkill -SEGV $$\n", "Ended by signal 11 (Segmentation fault)"),
            ("#!/no/such/interpreter\n", "Its interpreter /no/such/interpreter is missing"),
            (None, "No such file or directory"),
        ):
            with self.subTest(reason):
                bundle = self.pack("TestSetup.app", "--force")
                tool = bundle / "Contents/Helpers/ditto"
                tool.unlink()
                if contents is not None:
                    write(tool, contents, 0o755)
                self.assertEqual(
                    self.own_lines(bundle), self.expected(bundle, reason, "Info.datx", "Data.datx")
                )
                self.assertEqual(self.records(), [])


class SetupStartAlertTest(WindowTestCase):
    """With windows."""

    def start_alert(self, language="en"):
        write(self.source / "Data/setup", machine_program(EM_X86_64, "/no/such/ld.so"), 0o755)
        self.startup()
        run = self.start_in(language, self.pack("TestSetup.app", "--force"))
        return run, self.assert_alert(run, run.texts["ERROR_INIT"])

    def end(self, run):
        self.assertEqual(run.process.wait(timeout=60), 1)
        run.stop()
        self.assertEqual(run.titles, [run.texts["FILE_EXTRACT"], self.name])
        self.assertEqual(run.staging, [False, True, False])
        self.assertEqual(os.listdir(self.temporary), [])

    def test_alert_in_each_language(self):
        for language in LANGUAGES:
            with self.subTest(language):
                run, window = self.start_alert(language)
                self.assert_inside_screen(window)
                self.picture("setup-start-alert", language)
                self.desktop.key("Return")
                self.end(run)

    def test_staging_folder_is_gone_while_the_alert_is_there(self):
        run, _ = self.start_alert()
        self.assertEqual(os.listdir(self.temporary), [])
        self.desktop.click_close_box(self.name)
        self.end(run)

    def test_payload_that_was_not_unpacked_is_no_alert(self):
        bundle = self.package()
        write(bundle / "Contents/Resources/Data.datx", "no archive")
        run = self.start(bundle)
        run.wait()
        self.assertEqual(run.titles, [run.texts["FILE_EXTRACT"]])
        self.assertEqual(self.records(), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
