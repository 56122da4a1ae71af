# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Packages of one file: placed, started, and gone again, however they end."""

import os
import pathlib
import signal
import subprocess
import unittest

from support import PackageTestCase, wait_until, write

SLOW_SETUP = """#!/bin/sh
echo $$ > "$ZPK_TEST_RECORD"
exec sleep 60
"""


class RunFileTestCase(PackageTestCase):
    def run_file(self, name="TestSetup.run"):
        self.recorder()
        self.startup()
        return self.pack(name)

    def start(self, path, *arguments, **env):
        process = subprocess.Popen(
            [path, *arguments],
            env=self.environment(**env),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            errors="surrogateescape",
            cwd=self.folder,
        )
        self.addCleanup(self.end, process)
        return process

    def end(self, process):
        if process.poll() is None:
            process.kill()
        process.wait()
        for stream in (process.stdout, process.stderr):
            stream.close()

    def finish(self, process, expect=0):
        out, err = process.communicate(timeout=60)
        self.assertEqual(process.returncode, expect, out + err)
        # The watcher removes the bundle once the launcher has ended.
        wait_until(lambda: not os.listdir(self.temporary), 10)
        return out, err

    def running_setup(self):
        """The process of the slow setup program, which ends with the test."""

        def words():
            return self.record_path.exists() and self.record_path.read_text().strip()

        setup = int(wait_until(words, 30))
        self.addCleanup(lambda: os.path.exists("/proc/%d" % setup) and os.kill(setup, signal.SIGKILL))
        return setup

    def placed_folders(self):
        return sorted(pathlib.Path(self.temporary).glob("zephyrkit-run-*"))


class RunFileTest(RunFileTestCase):
    def test_installs_and_leaves_nothing(self):
        out, _ = self.finish(self.start(self.run_file()))
        self.assertIn("recorder: ran", out)
        self.assertEqual(self.record()["arguments"], ["--test"])

    def test_setup_program_finds_environment_and_folder_as_they_were(self):
        expected = self.environment(MARK="a b")
        self.finish(self.start(self.run_file(), MARK="a b"))
        environment = self.record()["environment"]
        for own in ("LC_CTYPE", "_"):
            environment.pop(own, None)
            expected.pop(own, None)
        self.assertEqual(environment, expected)
        self.assertEqual(self.record()["folder"], str(self.folder))
        self.assertLessEqual(len(self.record()["descriptors"]), 4)

    def test_arguments_are_passed_over(self):
        self.finish(self.start(self.run_file(), "--help", "-x", "", "a b"))
        self.assertEqual(self.record()["arguments"], ["--test"])

    def test_names_of_any_kind(self):
        path = self.run_file()
        for name in ("a b.run", "a:b;c.run", "$LIB.run", "a\nb.run", os.fsdecode(b"\xff.run")):
            with self.subTest(name=name):
                other = self.folder / name
                os.rename(path, other)
                self.finish(self.start(other))
                path = other

    def test_bundle_goes_when_the_launcher_is_killed(self):
        write(self.source / "Data/setup", SLOW_SETUP, 0o755)
        self.startup()
        process = self.start(self.pack("TestSetup.run"))
        setup = self.running_setup()
        self.assertEqual(len(self.placed_folders()), 1)
        process.kill()
        # Its streams stay open: the setup program has them, too.
        self.assertEqual(process.wait(), -signal.SIGKILL)
        wait_until(lambda: not self.placed_folders(), 10)
        self.assertTrue(os.path.exists("/proc/%d" % setup))

    def test_folder_that_was_left_behind_goes_at_the_next_start(self):
        abandoned = self.temporary / "zephyrkit-run-1-0"
        write(abandoned / "A.app/Contents/x", "x")
        abandoned.chmod(0o700)
        self.finish(self.start(self.run_file()))

    def test_folder_in_use_stays_at_another_start(self):
        write(self.source / "Data/setup", SLOW_SETUP, 0o755)
        self.startup()
        process = self.start(self.pack("TestSetup.run"))
        setup = self.running_setup()
        first = self.placed_folders()
        # The same package again: a second run ends in silence. One that took the first one's bundle away
        # would not see it, and install.
        second = self.start(self.folder / "TestSetup.run")
        out, _ = second.communicate(timeout=20)
        self.assertEqual((second.returncode, out), (0, ""))
        wait_until(lambda: self.placed_folders() == first, 10)
        self.assertTrue((first[0] / "TestSetup.app/Contents/Info.plist").exists())
        os.kill(setup, signal.SIGKILL)
        self.finish(process)

    def test_reader_of_the_output_does_not_wait_for_the_watcher(self):
        process = self.start(self.run_file())
        out, _ = process.communicate(timeout=60)
        self.assertIn("recorder: ran", out)


class DamagedRunFileTest(RunFileTestCase):
    def expect_refusal(self, path, words):
        out, err = self.finish(self.start(path), expect=1)
        self.assertEqual(out, "")
        self.assertEqual(err.count("\n"), 1, err)
        self.assertTrue(err.startswith("Zephyrkit: "), err)
        self.assertIn(words, err)
        self.assertEqual(self.records(), [])

    def test_truncated_file_is_told(self):
        path = self.run_file()
        os.truncate(path, path.stat().st_size - 1)
        self.expect_refusal(path, "was cut short or changed")

    def test_changed_byte_is_told(self):
        path = self.run_file()
        good = path.read_bytes()
        # Past the program, in what is packed, and in the table.
        for at in (len(good) // 2, len(good) * 9 // 10, len(good) - 100):
            with self.subTest(at=at):
                path.unlink()  # a process that ends may still run from it
                path.write_bytes(good[:at] + bytes([good[at] ^ 1]) + good[at + 1 :])
                path.chmod(0o755)
                self.expect_refusal(path, "changed")

    def test_full_disk_is_told_and_leaves_nothing(self):
        write(self.source / "Data/noise", os.urandom(8 << 20))
        path = self.run_file()
        limited = subprocess.Popen(
            ["sh", "-c", 'ulimit -f 2048; exec "$0"', path],
            env=self.environment(),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
        )
        _, err = self.finish(limited, expect=1)
        self.assertIn("File too large", err)


if __name__ == "__main__":
    unittest.main()
