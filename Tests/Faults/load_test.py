# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Many launches, one after another and eight at once: none leaves anything that the next one could meet.

ZPK_LOAD times eight of each.
"""

import os
import unittest

from places import Place, sweep
from support import PackageTestCase, write

AT_ONCE = 8
LAUNCHES = AT_ONCE * int(os.environ.get("ZPK_LOAD", "1"))

# How a setup program finds the launcher, as one line.
SETUP = """#!/bin/sh
cd /proc/$$/fd && echo * >> "$ZPK_TEST_RECORD"
"""


class LoadedPlace(Place):
    def __init__(self, case, number):
        home = case.folder / f"home{number}"
        home.mkdir()
        super().__init__(case, number, HOME=str(home), XDG_CACHE_HOME=None)
        self.home = home
        self.peak = self.folder / "peak"
        self.descriptors = set()
        self.peaks = []

    def taken_runs(self):
        if self.record.exists():
            self.descriptors.add(self.record.read_text())
        return super().taken_runs()

    def problem(self):
        """Launches once."""
        status, runs = self.launch("/usr/bin/time", "--format=%M", f"--output={self.peak}")
        self.peaks.append(int(self.peak.read_text()))
        if (status, runs) != (0, 1):
            return f"status {status}, {runs} runs of the setup program"
        left = os.listdir(self.temporary) + os.listdir(self.home) + self.processes()
        return f"left: {left}" if left else None


class LoadTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        write(self.source / "Data/setup", SETUP, 0o755)
        write(self.source / "Data/folder/large", os.urandom(1_500_000))
        self.startup()

    def check(self, count):
        places = [LoadedPlace(self, number) for number in range(count)]
        problems = sweep(places, [(turn,) for turn in range(LAUNCHES)], lambda place, turn: place.problem())
        self.assertEqual(problems, [])
        self.assertEqual(len(set().union(*(place.descriptors for place in places))), 1)
        peaks = [peak for place in places for peak in place.peaks]
        # In kilobytes; whatever stayed of a launch in the next one would add up.
        self.assertLess(max(peaks), 1.25 * min(peaks))

    def test_one_after_another(self):
        self.check(1)

    def test_at_once(self):
        self.check(AT_ONCE)


if __name__ == "__main__":
    unittest.main(verbosity=2)
