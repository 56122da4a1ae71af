# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Signals at many moments of a launch, each followed by an undisturbed launch.

The moments are the system calls of the launcher's main thread; a sample of them unless ZPK_SIGNALS is "all".
"""

import collections
import os
import re
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
    """A launch that gets the signal at the call, which is a name and how manieth of that name."""
    name, count = call
    inject = f"inject={name}:signal={int(number)}:when={count}"
    return place.launch("strace", "-o", "/dev/null", "-e", "signal=none", "-e", inject)


class SweepTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.recorder()
        self.startup()
        self.places = [Place(self, number) for number in range(AT_ONCE)]
        self.ended = []

    def calls(self):
        """The system calls of the main thread from its first to its last: strace counts each name for itself."""
        log = self.folder / "calls"
        status, runs = self.places[0].launch("strace", "-o", log, "-e", "signal=none")
        self.assertEqual((status, runs), (0, 1))
        counts = collections.Counter()
        calls = []
        for name in re.findall(r"^(\w+)\(", log.read_text(errors="surrogateescape"), re.MULTILINE):
            counts[name] += 1
            calls.append((name, counts[name]))
        # Nothing comes back from the last one, exit_group, for a signal to come at.
        return calls[:-1]

    def moments(self, calls, wanted):
        """Some of the calls, evenly over the launch."""
        return calls if EVERY else calls[:: max(1, len(calls) // wanted)]

    def disturb(self, place, number, call):
        status, runs = disturbed(place, number, call)
        if status in (-number, 128 + number):
            self.ended.append((number, call))
        return status, runs

    def expect_that_signals_came(self, rows):
        """Not every call of one launch is made in each: how many files are read depends on what else runs."""
        self.assertGreater(len(self.ended), len(rows) // 2, self.ended)

    def check_end(self, place, number, call):
        status, runs = self.disturb(place, number, call)
        # Before the launcher looks after signals, and after, the signal does what it does by itself.
        if status not in (0, 128 + number, -number):
            return f"status {status}"
        if runs > 1 or (status == 0) != (runs == 1) and status != -number and status != 128 + number:
            return f"the setup program ran {runs} times, status {status}"
        return self.problem_left(place)

    def check_other(self, place, number, call):
        self.disturb(place, number, call)
        status, runs = place.launch()
        if (status, runs) != (0, 1):
            return f"the launch after it: status {status}, {runs} runs of the setup program"
        return self.problem_left(place)

    @staticmethod
    def problem_left(place):
        left = os.listdir(place.temporary)
        return f"left: {left}" if left else f"runs: {place.processes()}" if place.processes() else None

    def test_ends_at_every_moment_leave_nothing(self):
        calls = self.calls()
        rows = [(number, call) for number in END_SIGNALS for call in self.moments(calls, 18)]
        self.assertEqual(sweep(self.places, rows, self.check_end), [])
        self.expect_that_signals_came(rows)

    def test_launch_after_any_other_signal_is_undisturbed(self):
        calls = self.calls()
        rows = [(number, call) for number in OTHER_SIGNALS for call in self.moments(calls, 1)]
        kills = [(signal.SIGKILL, call) for call in self.moments(calls, 12)]
        self.assertEqual(sweep(self.places, kills, self.check_other), [])
        self.expect_that_signals_came(kills)
        self.assertEqual(sweep(self.places, rows, self.check_other), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
