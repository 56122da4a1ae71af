# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""A launch of which one system call fails, for every kind of call and many numbers of it.

However it goes, the launch ends by itself with a status, leaves no process and nothing in the temporary folder, and
changes nothing elsewhere. Of each kind every 7th call is tried, or another step that ZPK_FAULTS names; with windows
every 20th of those, or a step that ZPK_FAULTS_WITH_WINDOWS names. A table of what came of them is added to the file
that ZPK_FAULTS_TABLE names. A sweep goes on where it was ended when ZPK_FAULTS_KEPT names a file, in which each launch
is kept.
"""

import contextlib
import errno
import functools
import json
import os
import pathlib
import pwd
import shutil
import signal
import subprocess
import tempfile
import unittest

from places import Place, sweep
from support import BUILD, PackageTestCase, write, x_server
from tally import Tally

STEP = int(os.environ.get("ZPK_FAULTS", "7"))
STEP_WITH_WINDOWS = int(os.environ.get("ZPK_FAULTS_WITH_WINDOWS", 20 * STEP))
TABLE = os.environ.get("ZPK_FAULTS_TABLE")
KEPT = os.environ.get("ZPK_FAULTS_KEPT")
INJECTOR = BUILD / "Tests/Faults/zpk_fault_injector"
LOADER = "ld-linux-x86-64.so.2"
# Far above what a launch takes on a busy machine. With windows, an alert waits for a person, and is asked to go.
SECONDS = 120
SECONDS_OF_AN_ALERT = 30
# Every call is counted, and none fails.
UNDISTURBED = "count"
AT_ONCE = 16

# What else calls fail with than EIO, which every call of a file and every one that is in no row fails with.
ERRORS = {
    "EACCES": "openat execve mkdir mkdirat unlink unlinkat stat newfstatat statx faccessat2 chdir rmdir readlink",
    "EAGAIN": "clone clone3 fork vfork",
    "EINTR": "openat read write pread64 pwrite64 close wait4 waitid poll connect recvmsg sendmsg writev",
    "EMFILE": "openat open pipe2 eventfd2 epoll_create1 socket memfd_create dup2 landlock_create_ruleset",
    "ENOMEM": "mmap mremap mprotect munmap clone clone3 fork vfork execve poll epoll_ctl prlimit64 getdents64",
    "ENOBUFS": "writev",
    "ENOSPC": "write pwrite64 mkdir mkdirat openat rename renameat ftruncate fallocate symlinkat linkat",
    "EIO": "openat read write pwrite64 close stat newfstatat statx unlink unlinkat rmdir getdents64 copy_file_range",
}
# The kernel has no failure for these, or none with the arguments that are given. (What brk cannot do it tells by the
# old end; the limits of memory are tried with the others.)
WITHOUT_FAILURE = set(
    "arch_prctl brk exit exit_group futex getegid geteuid getgid getpid getppid gettid getuid restart_syscall rseq "
    "rt_sigaction rt_sigprocmask rt_sigreturn sched_yield set_robust_list set_tid_address umask".split()
)


# The kernel keeps a mapping only where it would have to split one. A thread's stack is whole, and the C library ends a
# process that it is kept in.
WITHOUT_FAILURE_WITH_WINDOWS = {"munmap"}

# What the toolkit makes where it takes the session's runtime folder for unusable.
OF_THE_TOOLKIT = {"runtime-" + pwd.getpwuid(os.geteuid()).pw_name}

# What starts a program as the first process of a name space.
ALONE = ("unshare", "--pid", "--fork", "--mount-proc")


@functools.cache
def may_be_alone():
    return subprocess.run([*ALONE, "true"], capture_output=True).returncode == 0


def alone():
    """ALONE, where it may be had.

    The search for another run asks each process of the machine: with those of others in sight, the numbers behind it
    would be others in each launch, and the last ones never come.
    """
    return ALONE if may_be_alone() else ()


def errors_of(call):
    return [error for error, calls in ERRORS.items() if call in calls.split()] or ["EIO"]


def rows_of(counts, step):
    """Every (call, error, number); with a step, every so many of each kind, one error each in turn."""
    failing = ((call, count) for call, count in sorted(counts.items()) if call not in WITHOUT_FAILURE)
    for position, (call, count) in enumerate(failing):
        errors = errors_of(call)
        for number in range(1 + position % min(step, count), count + 1, step):
            for error in errors if step == 1 else [errors[number // step % len(errors)]]:
                yield call, error, number


def state_of(folder):
    """What a change in a folder shows in."""
    found = {}
    for where, _, files in os.walk(folder):
        for name in (".", *files):
            path = os.path.join(where, name)
            attributes = os.lstat(path)
            found[path] = (attributes.st_ino, attributes.st_mode, attributes.st_size, attributes.st_mtime_ns)
    return found


class FaultyPlace(Place):
    """With a home folder beside the temporary one."""

    def __init__(self, case, number, *package, **more):
        home = case.folder / f"home{number}"
        super().__init__(case, number, *package, HOME=str(home), XDG_CACHE_HOME=None, **more)
        self.report = self.folder / "report"
        self.kept = write(home / "kept/file", "the person's").parent
        # Where the launcher goes when the temporary folder will not do.
        self.cache = home / ".cache"
        self.cache.mkdir(mode=0o700)
        self.before = self.state()

    def state(self):
        package = self.program.parents[2] if self.program.name == "Zephyrkit" else self.program
        return state_of(package), state_of(self.kept)

    def injector(self, fault):
        # Undisturbed there is none, however long it takes.
        may_alert = fault != UNDISTURBED and "DISPLAY" in self.environment
        asked = str(SECONDS_OF_AN_ALERT if may_alert else 0)
        return (*alone(), INJECTOR, self.report, self.folder, asked, str(SECONDS), fault)

    def traced(self, fault):
        """What the injector tells, with how often the setup program has run."""
        self.report.unlink(missing_ok=True)
        status, runs = self.launch(*self.injector(fault), timeout=4 * SECONDS)
        if status != 0:
            raise AssertionError(f"{fault}: the injector failed")
        return dict(json.loads(self.report.read_text()), runs=runs)

    @staticmethod
    def has_obeyed(report):
        return report["asked"] and report["status"] == 128 + signal.SIGTERM

    def has_ended_its_tool(self, report, death):
        """With windows a run that cannot go on ends the tool itself, which is unpacking meanwhile.

        One that is killed between its start and its first call is still known as what has started it.
        """
        is_killed = death["signal"] == signal.SIGKILL and report["status"] in (1, 128 + signal.SIGTERM)
        return is_killed and os.path.basename(death["program"]) in ("ditto", LOADER) and "DISPLAY" in self.environment

    @staticmethod
    def has_failed_to_load(death):
        """The loader was refused something before the second stage's first line, where nothing is made yet."""
        return death["loading"] and os.path.basename(death["program"]) == LOADER and death["signal"] == signal.SIGSEGV

    def problems(self, report):
        """What must not be, however the launch went."""
        if report["hung"]:
            yield "it did not end"
        loads = [death for death in report["deaths"] if self.has_failed_to_load(death)]
        if report["status"] >= 128 and not self.has_obeyed(report) and not loads:
            yield f"status {report['status']}"
        for death in report["deaths"]:
            if death in loads or self.has_ended_its_tool(report, death):
                continue
            yield f"{os.path.basename(death['program'])} was ended by {signal.Signals(death['signal']).name}"
        if report["orphans"]:
            yield f"processes were left: {report['orphans']}"
        if report["runs"] > 1:
            yield f"the setup program ran {report['runs']} times"
        for folder in (self.temporary, self.cache):
            if left := set(os.listdir(folder)) - OF_THE_TOOLKIT:
                yield f"{folder.name} holds {left}"
        if self.state() != self.before:
            yield "something else was changed"

    def clean(self):
        """For the next launch, whatever this one has done."""
        for folder in (self.temporary, self.cache):
            for entry in folder.iterdir():
                shutil.rmtree(entry, ignore_errors=True)
        self.before = self.state()


class FaultCase(PackageTestCase):
    def setUp(self):
        super().setUp()
        write(self.source / "Data/setup", '#!/bin/sh\necho ran >> "$ZPK_TEST_RECORD"\n', 0o755)
        # More than one block of the archive.
        write(self.source / "Data/folder/inner/large", os.urandom(1_500_000))
        write(self.source / "Data/folder/file", "contents")
        (self.source / "Data/folder/link").symlink_to("file")
        os.link(self.source / "Data/folder/file", self.source / "Data/folder/other")
        self.startup()

    def check_each(self, title, step, *package, chosen=None, at_once=AT_ONCE, **more):
        places = [FaultyPlace(self, number, *package, **more) for number in range(at_once)]
        undisturbed = places[0].traced(UNDISTURBED)
        self.assertEqual(list(places[0].problems(undisturbed)), [])
        self.assertEqual((undisturbed["status"], undisturbed["runs"]), (0, 1))
        tally = Tally(title, KEPT if title else None)

        def check(place, call, error, number):
            report = place.traced(f"{call}:{getattr(errno, error)}:{number}")
            if problems := list(place.problems(report)):
                place.clean()
            tally.add((call, error, number), report, problems)
            return "; ".join(problems)

        left_out = WITHOUT_FAILURE_WITH_WINDOWS if "DISPLAY" in more else ()
        counts = {call: count for call, count in undisturbed["counts"].items() if call not in left_out}
        rows = [row for row in rows_of(counts, step) if chosen is None or chosen(*row)]
        problems = sweep(places, (row for row in rows if not tally.knows(row)), check)
        if TABLE and title:
            tally.write(TABLE, f"{title}, every {step}th call" if step > 1 else f"{title}, every call", errors_of)
        self.assertEqual(problems, [])
        # A sweep that strikes nothing would find nothing.
        self.assertGreater(tally.struck(), len(rows) * 0.8)


class FaultTest(FaultCase):
    def test_one_failed_call_on_a_terminal(self):
        self.check_each("A bundle on a terminal", STEP, arguments=("--without-windows",))

    def test_no_wake_up_is_lost_and_no_random_number_needed(self):
        chosen = lambda call, error, number: call in ("getrandom", "write")
        self.check_each("", 1, arguments=("--without-windows",), chosen=chosen)


    def test_others_processes_are_out_of_sight(self):
        if not may_be_alone():
            self.skipTest("no name space of processes can be had here")
        place = FaultyPlace(self, 0, arguments=("--without-windows",))
        before = place.traced(UNDISTURBED)["counts"]
        with contextlib.ExitStack() as others:
            for _ in range(100):
                other = others.enter_context(subprocess.Popen(["sleep", "infinity"]))
                others.callback(other.kill)
            beside = place.traced(UNDISTURBED)["counts"]
        self.assertEqual({call: count for call, count in beside.items() if count >= before.get(call, 0) + 50}, {})


class WindowFaultTest(FaultCase):
    """What once held a run with windows up for ever, or left a process of the toolkit's behind."""

    def test_what_passes_ends_no_connection(self):
        """The kernel lacks memory for a moment, and the display is still there."""
        lacking = {("writev", "ENOBUFS"): (11, 38, 53), ("poll", "ENOMEM"): (22, 80, 128)}
        with x_server() as display:
            self.check_each("", 1, chosen=lambda call, error, number: number in lacking.get((call, error), ()),
                            at_once=4, DISPLAY=display)

    def test_own_path_that_may_not_be_asked_starts_no_bus(self):
        with x_server() as display:
            self.check_each("", 1, chosen=lambda call, error, number: call == "readlink" and number <= 5,
                            at_once=4, DISPLAY=display)


class RefusedThreadTest(FaultCase):
    """With windows, where the toolkit has threads that it waits for."""

    def test_run_ends_with_a_line_or_goes_on_on_the_terminal(self):
        told = set()
        with x_server() as display:
            place = FaultyPlace(self, 0, DISPLAY=display)
            for number in range(1, place.traced(UNDISTURBED)["counts"]["clone3"] + 1):
                fault = f"clone3:{errno.EAGAIN}:{number}"
                done = subprocess.run([*place.injector(fault), place.program], env=place.environment,
                                      stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=4 * SECONDS)
                self.assertEqual(done.returncode, 0, done.stderr)
                report = dict(json.loads(place.report.read_text()), runs=place.taken_runs())
                lines = [line for line in done.stderr.splitlines() if line.startswith("Zephyrkit: ")]
                with self.subTest(number=number, report=report, lines=lines):
                    self.assertEqual(list(place.problems(report)), [])
                    self.assertIn(os.strerror(errno.EAGAIN), lines[0])
                told.add((report["status"], lines[0].split(": ")[1]))
        self.assertLessEqual({(0, "no windows"), (1, "no thread")}, told)


class MoreFaultTest(FaultCase):
    def test_one_failed_call_of_a_run_file(self):
        self.check_each("A file of a package", STEP, "TestSetup.run", arguments=("--without-windows",))

    def test_one_failed_call_with_windows(self):
        with x_server() as display:
            self.check_each("A bundle with windows", STEP_WITH_WINDOWS, DISPLAY=display)

    def test_no_thread_is_waited_for(self):
        with x_server() as display:
            self.check_each("", 1, chosen=lambda call, error, number: call == "clone3", at_once=4, DISPLAY=display)


class TallyTest(unittest.TestCase):
    def test_what_was_well_is_not_done_again(self):
        report = {"runs": 1, "asked": False, "status": 0, "struck": "it"}
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "kept"
            first = Tally("one", file)
            first.add(("read", "EIO", 1), report, [])
            first.add(("read", "EIO", 2), report, ["it did not end"])
            Tally("another", file).add(("close", "EIO", 1), dict(report, runs=0, struck=None), [])
            second = Tally("one", file)
            known = [second.knows(row) for row in [("read", "EIO", 1), ("read", "EIO", 2), ("close", "EIO", 1)]]
            table = pathlib.Path(folder) / "table"
            second.write(table, "heading", lambda call: ["EIO"])
            self.assertEqual(known, [True, False, False])
            self.assertEqual(second.struck(), 1)
            self.assertIn("| `read` | EIO | 1 | 1 | 1 | 0 | 0 | 0 | 0 | 0 |", table.read_text().splitlines())


if __name__ == "__main__":
    unittest.main(verbosity=2)
