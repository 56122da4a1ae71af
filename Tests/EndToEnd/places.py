# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Many launches side by side: most of a launch is the second that its full bar stays."""

import concurrent.futures
import contextlib
import os
import pathlib
import subprocess
import threading


class Place:
    """A package of its own name and a folder for temporary files of its own: launches of two places do not meet."""

    def __init__(self, case, number, package="TestSetup.app", *, arguments=(), **environment):
        self.folder = case.folder / f"place{number}"
        self.folder.mkdir()
        case.describe_package(f"{case.name}-{number}")
        made = case.pack(f"place{number}/{package}", *arguments)
        self.program = made / "Contents/Linux/Zephyrkit" if made.is_dir() else made
        self.temporary = self.folder / "tmp"
        self.temporary.mkdir(mode=0o700)
        self.record = self.folder / "record"
        self.environment = case.environment(
            TMPDIR=str(self.temporary), ZPK_TEST_RECORD=str(self.record), **environment
        )

    def launch(self, *wrapper, timeout=120, stdout=subprocess.DEVNULL):
        """Gives the status and how often the setup program has run.

        With a pipe for `stdout` it waits for a setup program that outlives its launcher, too.
        """
        done = subprocess.run(
            [*wrapper, self.program],
            env=self.environment,
            stdin=subprocess.DEVNULL,
            stdout=stdout,
            stderr=subprocess.DEVNULL,
            timeout=timeout,
        )
        return done.returncode, self.taken_runs()

    def taken_runs(self):
        runs = len(self.record.read_text().splitlines()) if self.record.exists() else 0
        self.record.unlink(missing_ok=True)
        return runs

    def processes(self):
        """The programs that still run out of the place."""
        found = []
        for link in pathlib.Path("/proc").glob("[0-9]*/exe"):
            with contextlib.suppress(OSError):
                if (program := os.readlink(link)).startswith(f"{self.folder}/"):
                    found.append(program)
        return found


def sweep(places, rows, check):
    """Calls `check` with a place and each row, and gives the rows with a problem, as (row, problem).

    A place serves one row at a time.
    """
    waiting = iter(rows)

    def serve(place):
        problems = []
        while (row := next_row()) is not None:
            if problem := check(place, *row):
                problems.append((row, problem))
        return problems

    def next_row():
        with lock:
            return next(waiting, None)

    lock = threading.Lock()
    with concurrent.futures.ThreadPoolExecutor(len(places)) as pool:
        return [problem for served in pool.map(serve, places) for problem in served]
