# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Launchers of one package that begin in the same moment: one goes on, the others end in silence."""

import os
import pathlib
import shutil
import signal
import subprocess
import unittest

from support import PackageTestCase, wait_until, write, x_server

MANY = 6
# A line for each time that it runs; it stays until it is killed.
SETUP = """#!/bin/sh
echo $$ >> "$ZPK_TEST_RECORD"
exec sleep 600
"""


@unittest.skipUnless(shutil.which("strace"), "strace is not installed")
class ManyStartsTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        write(self.source / "Data/setup", SETUP, 0o755)
        self.startup()

    def start(self, program, **env):
        """A launcher that stands still where it has tried to be the first, and has not looked for others yet.

        Gives the process that keeps it so, and its own number.
        """
        log = self.folder / ("calls-%d" % len(list(self.folder.glob("calls-*"))))
        keeper = subprocess.Popen(
            ["strace", "-qq", "-o", log, "-e", "trace=bind", "-e", "inject=bind:signal=SIGSTOP:when=1", program],
            env=self.environment(**env), cwd=self.folder, text=True,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(self.end, keeper)

        def stands():
            self.assertIsNone(keeper.poll(), "it ended before it stood still")
            return log.exists() and "stopped by SIGSTOP" in log.read_text()

        wait_until(stands, 60)
        # What else it has started are its own children.
        return keeper, int(pathlib.Path("/proc/%d/task/%d/children" % (keeper.pid, keeper.pid)).read_text())

    def end(self, keeper):
        """What a failed test leaves; a launcher goes on when its keeper is gone."""
        if keeper.poll() is None:
            for child in pathlib.Path("/proc/%d/task/%d/children" % (keeper.pid, keeper.pid)).read_text().split():
                os.kill(int(child), signal.SIGKILL)
        keeper.communicate()

    def setups(self):
        return self.record_path.read_text().split() if self.record_path.exists() else []

    def end_setups(self):
        for setup in self.setups():
            if os.path.exists("/proc/" + setup):
                os.kill(int(setup), signal.SIGKILL)

    def assert_silent(self, keeper, status=0):
        """Its keeper ends as it does."""
        out, err = keeper.communicate(timeout=60)
        self.assertEqual((keeper.returncode, out), (status, ""))
        self.assertNotIn("Zephyrkit: ", err)

    def assert_first_goes_on(self, program, first_goes_last, **env):
        """Of many that all see each other."""
        self.addCleanup(self.end_setups)
        first, *others = started = [self.start(program, **env) for _ in range(MANY)]
        for _, launcher in [*others, first] if first_goes_last else started:
            os.kill(launcher, signal.SIGCONT)
        for keeper, _ in others:
            self.assert_silent(keeper)
        wait_until(self.setups, 60)
        # One that comes later does not wait for it.
        late, launcher = self.start(program, **env)
        os.kill(launcher, signal.SIGCONT)
        self.assert_silent(late)
        self.assertIsNone(first[0].poll())
        self.assertEqual(len(self.setups()), 1)
        self.end_setups()
        first[0].communicate(timeout=60)
        self.assertEqual(first[0].returncode, 0)
        wait_until(lambda: not os.listdir(self.temporary), 60)
        self.record_path.unlink()

    def test_bundles_on_the_terminal(self):
        launcher = self.pack() / "Contents/Linux/Zephyrkit"
        for first_goes_last in (False, True):
            with self.subTest(first_goes_last=first_goes_last):
                self.assert_first_goes_on(launcher, first_goes_last)

    def test_bundles_with_windows(self):
        launcher = self.pack() / "Contents/Linux/Zephyrkit"
        with x_server() as display:
            self.assert_first_goes_on(launcher, False, DISPLAY=display)

    def test_files(self):
        self.assert_first_goes_on(self.pack("TestSetup.run", "--without-windows"), False)

    def test_of_the_network_only_the_lock_is_asked_for(self):
        write(self.source / "Data/setup", "#!/bin/sh\n", 0o755)
        log = self.folder / "network"
        command = ["strace", "-f", "-qq", "-o", log, "-e", "trace=network", "-e", "signal=none",
                   self.pack() / "Contents/Linux/Zephyrkit"]
        self.assertEqual(subprocess.run(command, env=self.environment(), timeout=60, stdin=subprocess.DEVNULL,
                                        capture_output=True).returncode, 0)
        calls = [line.split(maxsplit=1)[1] for line in log.read_text().splitlines()]
        self.assertEqual(len(calls), 2, calls)
        self.assertRegex(calls[0], r"^socket\(AF_UNIX, SOCK_STREAM\|SOCK_CLOEXEC, 0\) ")
        self.assertIn('sun_path=@"zephyrkit-%d-%s"' % (os.geteuid(), self.name), calls[1])

    def test_asked_to_end_while_it_waits(self):
        """Its status is the signal's, and it says nothing."""
        launcher = self.pack() / "Contents/Linux/Zephyrkit"
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number):
                (first, waiting), (other, standing) = self.start(launcher), self.start(launcher)
                os.kill(waiting, number)
                os.kill(waiting, signal.SIGCONT)
                self.assert_silent(first, 128 + number)
                os.kill(standing, signal.SIGKILL)
                other.communicate(timeout=60)
                self.assertEqual(self.setups(), [])


if __name__ == "__main__":
    unittest.main()
