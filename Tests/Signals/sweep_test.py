# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Signals at many moments of a launch, each followed by an undisturbed launch.

The moments are the system calls of the launcher's main thread: a sample of them, or, where ZPK_SIGNALS is a number,
every so many of each kind of call, and at least one. What came of those is added to the file that ZPK_FAULTS_TABLE
names.
"""

import collections
import os
import re
import signal
import subprocess
import unittest

from places import Place, sweep
from support import PackageTestCase, write

STEP = int(os.environ.get("ZPK_SIGNALS", "0"))
TABLE = os.environ.get("ZPK_FAULTS_TABLE")
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
    strace = ("strace", "-o", "/dev/null", "-e", "signal=none", "-e", inject)
    # A setup program that a killed launcher has started counts for that launch, however late it is.
    return place.launch(*strace, stdout=subprocess.PIPE)


class SweepTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        write(self.source / "Data/setup", '#!/bin/sh\necho ran >> "$ZPK_TEST_RECORD"\n', 0o755)
        self.startup()
        self.places = [Place(self, number) for number in range(AT_ONCE)]
        self.seen = []
        self.addCleanup(self.write_table)

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

    @staticmethod
    def moments(calls, wanted, offset=0):
        """Some of the calls, evenly over the launch, or of each kind every so many from another one on."""
        if not STEP:
            return calls[:: max(1, len(calls) // wanted)]
        highest = dict(calls)
        return [(name, n) for name, n in calls if n % STEP == offset % STEP or (highest[name] < STEP and n == 1)]

    def write_table(self):
        if not TABLE or not self.seen:
            return
        rows = collections.defaultdict(collections.Counter)
        for number, _, status in self.seen:
            rows[number]["by itself" if status == 128 + number else "killed" if status == -number else "gone on"] += 1
        with open(TABLE, "a", encoding="utf-8") as file:
            file.write("\n| signal | kinds of call | launches | gone on | ended by itself | killed |\n")
            file.write(f"|{'---|' * 6}\n")
            for number, row in sorted(rows.items()):
                kinds = {name for other, (name, _), _ in self.seen if other == number}
                numbers = (len(kinds), row.total(), row["gone on"], row["by itself"], row["killed"])
                file.write(f"| {signal.Signals(number).name} | {' | '.join(map(str, numbers))} |\n")

    def disturb(self, place, number, call):
        status, runs = disturbed(place, number, call)
        self.seen.append((number, call, status))
        return status, runs

    def expect_that_signals_came(self, rows):
        """Not every call of one launch is made in each: how many files are read depends on what else runs."""
        ended = [row for row in self.seen if row[2] in (-row[0], 128 + row[0])]
        self.assertGreater(len(ended), len(rows) // 2, ended)

    def check_end(self, place, number, call):
        status, runs = self.disturb(place, number, call)
        # Before the launcher looks after signals, and after, the signal does what it does by itself.
        if status not in (0, 128 + number, -number):
            return f"status {status}"
        if runs > 1 or (status == 0) != (runs == 1) and status != -number and status != 128 + number:
            return f"the setup program ran {runs} times, status {status}"
        return self.problem_left(place)

    def check_other(self, place, number, call):
        _, disturbed_runs = self.disturb(place, number, call)
        status, runs = place.launch()
        if disturbed_runs > 1 or (status, runs) != (0, 1):
            return f"{disturbed_runs} runs of the setup program; then status {status}, {runs} runs"
        return self.problem_left(place)

    @staticmethod
    def problem_left(place):
        left = os.listdir(place.temporary)
        return f"left: {left}" if left else f"runs: {place.processes()}" if place.processes() else None

    def test_ends_at_every_moment_leave_nothing(self):
        calls = self.calls()
        rows = [(number, call) for number in END_SIGNALS for call in self.moments(calls, 18, number)]
        self.assertEqual(sweep(self.places, rows, self.check_end), [])
        self.expect_that_signals_came(rows)

    def test_launch_after_any_other_signal_is_undisturbed(self):
        calls = self.calls()
        rows = [(number, call) for number in OTHER_SIGNALS for call in self.moments(calls, 1, number)]
        kills = [(signal.SIGKILL, call) for call in self.moments(calls, 12)]
        self.assertEqual(sweep(self.places, kills, self.check_other), [])
        self.expect_that_signals_came(kills)
        self.assertEqual(sweep(self.places, rows, self.check_other), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
