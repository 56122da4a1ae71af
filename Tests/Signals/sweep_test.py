# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Signals at many moments of a launch, each followed by an undisturbed launch.

The moments are the system calls of the launcher's main thread; a sample of them unless ZPK_SIGNALS is "all".
"""

import os
import signal
import unittest

from places import Place, sweep
from support import PackageTestCase

EVERY = os.environ.get("ZPK_SIGNALS") == "all"
AT_ONCE = 6

END_SIGNALS = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP)
# What stops a process ends nothing, and what cannot be caught but by it is SIGKILL alone.
OTHER_SIGNALS = tuple(
    number
    for number in signal.valid_signals()
    if number < 32
    and number not in (*END_SIGNALS, signal.SIGSTOP, signal.SIGTSTP, signal.SIGTTIN, signal.SIGTTOU)
)


def disturbed(place, number, call):
    inject = f"inject=all:signal={int(number)}:when={call}"
    return place.launch("strace", "-o", "/dev/null", "-e", "signal=none", "-e", inject)


class SweepTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.recorder()
        self.startup()
        self.places = [Place(self, number) for number in range(AT_ONCE)]

    def calls(self):
        """How many system calls the main thread makes from its first to its last."""
        log = self.folder / "calls"
        status, runs = self.places[0].launch("strace", "-o", log, "-e", "signal=none")
        self.assertEqual((status, runs), (0, 1))
        return len(log.read_text().splitlines())

    def moments(self, count, wanted):
        """Call numbers, evenly over the launch."""
        return range(1, count + 1) if EVERY else range(1, count + 1, max(1, count // wanted))

    @staticmethod
    def check_end(place, number, call):
        status, runs = disturbed(place, number, call)
        # Before the launcher looks after signals, and after, the signal does what it does by itself.
        if status not in (0, 128 + number, -number):
            return f"status {status}"
        if runs > 1 or (status == 0) != (runs == 1) and status != -number and status != 128 + number:
            return f"the setup program ran {runs} times, status {status}"
        return SweepTest.problem_left(place)

    @staticmethod
    def check_other(place, number, call):
        disturbed(place, number, call)
        status, runs = place.launch()
        if (status, runs) != (0, 1):
            return f"the launch after it: status {status}, {runs} runs of the setup program"
        return SweepTest.problem_left(place)

    @staticmethod
    def problem_left(place):
        left = os.listdir(place.temporary)
        return f"left: {left}" if left else f"runs: {place.processes()}" if place.processes() else None

    def test_ends_at_every_moment_leave_nothing(self):
        count = self.calls()
        rows = [(number, call) for number in END_SIGNALS for call in self.moments(count, 18)]
        self.assertEqual(sweep(self.places, rows, self.check_end), [])

    def test_launch_after_any_other_signal_is_undisturbed(self):
        count = self.calls()
        rows = [(number, call) for number in OTHER_SIGNALS for call in self.moments(count, 1)]
        rows += [(signal.SIGKILL, call) for call in self.moments(count, 12)]
        self.assertEqual(sweep(self.places, rows, self.check_other), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
