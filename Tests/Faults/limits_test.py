# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Launches on small disks, under low limits and with closed descriptors.

Each ends by itself with status 0 or 1, runs the setup program once or not at all, and leaves no process and nothing
in the temporary folder. A bundle and a file that holds a package are tried alike, on the terminal; a bundle under a
display as well, where an alert may wait for a person, and is asked to go.
"""

import contextlib
import os
import signal
import subprocess
import unittest

from places import Place, sweep
from support import PackageTestCase, wait_until, write, x_server

# How many places a kind of package has, and which of the rows it is tried with: to make a file of a package and to
# place what it holds takes many times what the rest of a launch does.
KINDS = {"TestSetup.app": (6, 1), "TestSetup.run": (2, 2)}


@contextlib.contextmanager
def disk(folder, options):
    subprocess.run(["mount", "-t", "tmpfs", "-o", options, "none", folder], check=True, capture_output=True)
    try:
        os.chmod(folder, 0o700)
        yield
    finally:
        subprocess.run(["umount", folder], check=True)


def under(shell):
    """Starts what follows in a shell that has done this first."""
    return ("sh", "-c", f'{shell}; exec "$@"', "sh")


class LimitCase(PackageTestCase):
    kinds = KINDS
    statuses = (0, 1)

    def setUp(self):
        super().setUp()
        write(self.source / "Data/setup", '#!/bin/sh\necho ran >> "$ZPK_TEST_RECORD"\n', 0o755)
        for number in range(6):
            write(self.source / f"Data/folder/file-{number}", os.urandom(50_000))
        write(self.source / "Info/note", "x" * 6000)
        self.startup()

    def problems(self, rows, arguments=("--without-windows",), **environment):
        self.runs, self.runs_with_few_processes = set(), set()
        self.folder.chmod(0o755)
        found = []
        for kind, (places, step) in self.kinds.items():
            served = [
                Place(self, f"{index}-{kind[-3:]}", kind, arguments=arguments, **environment)
                for index in range(places)
            ]
            done = sweep(served, rows[::step], lambda place, launch, given: self.problem(place, *launch(place, given)))
            found += [(kind, launch.__name__, given, problem) for (launch, given), problem in done]
        return found

    def assert_some_are_felt(self):
        """Some of the limits, and some of those of processes, and others are not."""
        self.assertEqual(self.runs, {0, 1})
        if os.geteuid() == 0:
            self.assertEqual(self.runs_with_few_processes, {0, 1})

    def problem(self, place, status, runs, left):
        self.runs.add(runs)
        if status not in self.statuses or runs > 1:
            return f"status {status}, {runs} runs of the setup program"
        return f"left: {left}" if left else None

    @staticmethod
    def launch(place, *wrapper):
        """The status, the setup program's runs and what is left when nothing goes any more."""
        status, runs = place.launch(*wrapper)
        # What a file of a package has placed goes when its last process has gone.
        wait_until(lambda: not place.processes(), 60)
        return status, runs, os.listdir(place.temporary)

    def launch_limited(self, place, *wrapper):
        return self.launch(place, *wrapper)

    def launch_under(self, place, shell):
        return self.launch_limited(place, *under(shell))

    def launch_on_disk(self, place, options):
        with disk(place.temporary, options):
            return self.launch(place)

    def launch_as_user(self, place, number):
        """The number of processes counts for a user, and not for root: each row has a user of its own."""
        user = 200_000_000 + os.getpid() * 10 + number
        place.folder.chmod(0o777)
        os.chown(place.temporary, user, user)
        try:
            become = ("setpriv", f"--reuid={user}", f"--regid={user}", "--clear-groups")
            # A shell need not know this limit.
            done = self.launch_limited(place, *become, "prlimit", f"--nproc={number}:{number}")
            self.runs_with_few_processes.add(done[1])
            return done
        finally:
            os.chown(place.temporary, 0, 0)


class LimitTest(LimitCase):
    def test_launches(self):
        """Rows are a launch and what it is given."""
        limits = [f"ulimit -n {number}" for number in (3, 4, 5, 6, 7, 8, 9, 10, 12, 16, 24)]
        limits += [f"ulimit -f {blocks}" for blocks in (0, 1, 8, 100, 300)]
        limits += [f"ulimit -v {size}" for size in (4000, 8000, 12000, 20000, 30000, 50000, 100_000, 400_000)]
        closings = ("0<&-", "1>&-", "2>&-")
        for chosen in range(1, 8):
            limits.append("exec " + " ".join(c for bit, c in enumerate(closings) if chosen >> bit & 1))
        rows = [(self.launch_under, limit) for limit in limits]
        if os.geteuid() == 0:
            rows += [(self.launch_on_disk, f"size={4 << power}k") for power in range(10)]
            rows += [(self.launch_on_disk, f"size=8m,nr_inodes={number}") for number in range(1, 21)]
            rows += [(self.launch_as_user, number) for number in range(1, 9)]
        self.assertEqual(self.problems(rows), [])
        self.assert_some_are_felt()


class WindowLimitTest(LimitCase):
    kinds = {"TestSetup.app": (6, 1)}
    statuses = (0, 1, 128 + signal.SIGTERM)

    def launch_limited(self, place, *wrapper):
        return self.launch(place, "timeout", "--preserve-status", "--kill-after=300", "30", *wrapper)

    def test_launches(self):
        rows = [(self.launch_under, f"ulimit -v {size}") for size in (50_000, 100_000, 200_000, 300_000, 400_000)]
        rows += [(self.launch_under, f"ulimit -f {blocks}") for blocks in (0, 8, 100)]
        rows += [(self.launch_under, f"exec {closed}") for closed in ("0<&-", "2>&-", "0<&- 1>&- 2>&-")]
        if os.geteuid() == 0:
            rows += [(self.launch_as_user, number) for number in (1, 2, 3, 5, 8, 12)]
        with x_server() as display:
            self.assertEqual(self.problems(rows, (), DISPLAY=display), [])
        self.assert_some_are_felt()


if __name__ == "__main__":
    unittest.main(verbosity=2)
