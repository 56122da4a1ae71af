# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What a person lets the launcher ignore (`nohup`, a shell's background) its children ignore, and nothing else."""

import signal
import subprocess
import unittest

from support import PackageTestCase, write, x_server

# Adds the signals that it ignores to the record; by itself, since a program may change its own.
TELL = """#!/bin/sh
while read -r name value; do
    case $name in SigIgn:) echo "${0##*/} $value" >> "$ZPK_TEST_RECORD" ;; esac
done < /proc/$$/status
"""
TELLING_TOOL = TELL + 'exec "${0%/*}/ditto.real" "$@"\n'

CRASHES = (signal.SIGABRT, signal.SIGBUS, signal.SIGFPE, signal.SIGILL, signal.SIGSEGV, signal.SIGTRAP)
# What may be ignored at all.
ALL = tuple(sorted(number for number in signal.valid_signals() - {signal.SIGKILL, signal.SIGSTOP} if number < 32))
# None, those of a shell's background, each of those that the launcher has a use for itself, and all.
CHOSEN = ((), (signal.SIGINT, signal.SIGQUIT), (signal.SIGHUP,), (signal.SIGPIPE,), (signal.SIGXFSZ,), CRASHES, ALL)


class IgnoredSignalsTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.setup = write(self.source / "Data/setup", TELL, 0o755)
        self.startup()

    def bundle(self):
        bundle = self.pack()
        tool = bundle / "Contents/Helpers/ditto"
        tool.rename(tool.with_name("ditto.real"))
        write(tool, TELLING_TOOL, 0o755)
        return bundle / "Contents/Linux/Zephyrkit"

    def told(self, program, chosen, **env):
        """What the programs tell that one run starts, in their order."""

        def ignore():
            for number in chosen:
                signal.signal(number, signal.SIG_IGN)

        done = subprocess.run([program], env=self.environment(**env), stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, timeout=60, preexec_fn=ignore)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        told = [line.split() for line in self.record_path.read_text().splitlines()]
        self.record_path.unlink()
        # Those from the 32nd on are the C library's, which leaves two of them ignored in whatever it starts.
        return [(name, int(mask, 16) & (1 << 31) - 1) for name, mask in told]

    def check(self, program, names, **env):
        for chosen in CHOSEN:
            with self.subTest(chosen=[number.name for number in chosen]):
                # As it is without a launcher between.
                ((_, expected),) = self.told(self.setup, chosen)
                self.assertEqual(self.told(program, chosen, **env), [(name, expected) for name in names])

    def test_on_the_terminal(self):
        self.check(self.bundle(), ("ditto", "ditto", "setup"))

    def test_under_a_display(self):
        with x_server() as display:
            self.check(self.bundle(), ("ditto", "ditto", "setup"), DISPLAY=display)

    def test_from_a_single_file(self):
        self.check(self.pack("TestSetup.run", "--without-windows"), ("setup",))


if __name__ == "__main__":
    unittest.main(verbosity=2)
