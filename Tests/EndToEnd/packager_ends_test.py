# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What the packager leaves behind where it cannot come to its end: signals at known places, full disks, Ctrl-C at a
terminal's bar."""

import contextlib
import fcntl
import gzip
import os
import pathlib
import pty
import select
import shutil
import signal
import struct
import subprocess
import termios
import time
import unittest

from packager_case import ROTATION, CommandTestCase, scrambled
from support import BUILD, odc_archive, wait_until, write

ROOT = pathlib.Path(__file__).resolve().parents[2]
WIPE = b"\r\x1b[K"
PAGE = os.sysconf("SC_PAGE_SIZE")


class HalfWayTestCase(CommandTestCase):
    """Whatever is made is made whole, or not at all."""

    def signalled(self, call, number, *arguments):
        """The command gets the signal when it first makes that system call; what it starts is left alone."""
        done = subprocess.run(
            ["strace", "-qq", "-o", "/dev/null", "-e", f"trace={call}"]
            + ["-e", f"inject={call}:signal={int(number)}:when=1", BUILD / "zpkpack", *arguments],
            cwd=self.folder, stdin=subprocess.DEVNULL, capture_output=True, timeout=60)
        self.assertEqual(done.returncode, -number, done.stderr)

    def expect_nothing_after_signals(self, *arguments):
        """While the process waits for the one that makes it all."""
        before = self.tree(self.folder)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            self.signalled("poll", number, *arguments)
            self.assertEqual(self.tree(self.folder), before, number)
        self.signalled("poll", signal.SIGKILL, *arguments)
        left = [row for row in self.tree(self.folder) if "/.zpk-" not in "/" + row[0]]
        self.assertEqual(left, before)
        # Whoever works there next removes what was left.
        self.run_zpkpack(*arguments)

    def expect_all_after_signals(self, *arguments):
        """When what was made is put in its place, it is too late to ask for an end."""
        self.signalled("renameat2", signal.SIGTERM, *arguments)
        self.assertEqual([row for row in self.tree(self.folder) if "/.zpk-" in "/" + row[0]], [])

    @contextlib.contextmanager
    def stopped(self, call, *arguments):
        """The number of a command whose maker stands still at its first such call, with its output half made."""
        log = self.folder / "calls"
        tracer = subprocess.Popen(
            ["strace", "-f", "-qq", "-o", log, "-e", f"trace={call}", "-e", f"inject={call}:signal=STOP:when=1"]
            + [BUILD / "zpkpack", *arguments],
            cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            start_new_session=True)
        try:
            wait_until(lambda: tracer.poll() is not None or log.exists() and b"stopped by SIGSTOP" in log.read_bytes(), 60)
            self.assertIsNone(tracer.poll(), "nothing stood still")
            children = pathlib.Path(f"/proc/{tracer.pid}/task/{tracer.pid}/children").read_text().split()
            self.assertEqual(len(children), 1)
            yield tracer, int(children[0])
        finally:
            # Whoever still stands in it, too.
            with contextlib.suppress(ProcessLookupError):
                os.killpg(tracer.pid, signal.SIGKILL)
            tracer.communicate(timeout=60)
            log.unlink()

    def expect_nothing_half_made(self, call, made, *arguments):
        """Whenever a signal comes, and whoever is killed: the command, or the process in which it makes `made`."""
        before = self.tree(self.folder)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGKILL):
            with self.subTest(number=number):
                with self.stopped(call, *arguments) as (tracer, command):
                    self.assertEqual(len(list(made.parent.glob(".zpk-*/made"))), 1)
                    self.assertFalse(os.path.lexists(made))
                    os.kill(command, number)
                    self.assertEqual(tracer.communicate(timeout=60)[0], b"")
                    self.assertEqual(tracer.returncode, -number)
                left = [row for row in self.tree(self.folder) if "/.zpk-" not in "/" + row[0]]
                self.assertEqual(left if number == signal.SIGKILL else self.tree(self.folder), before)
        with self.stopped(call, *arguments) as (tracer, command):
            maker = pathlib.Path(f"/proc/{command}/task/{command}/children").read_text()
            os.kill(int(maker), signal.SIGKILL)
            self.assertIn(b"the process that packs ended before its time: Killed\n", tracer.communicate(timeout=60)[0])
            self.assertEqual(tracer.returncode, 1)
        # With what the killed command has left removed.
        self.assertEqual(self.tree(self.folder), before)
        self.expect_nothing_after_signals(*arguments)
        whole = self.tree(made) or self.sum_of(made)
        shutil.rmtree(made) if made.is_dir() else made.unlink()
        self.expect_all_after_signals(*arguments)
        self.assertEqual(self.tree(made) or self.sum_of(made), whole)

    def expect_nothing_on_full_disks(self, disk, expected, *arguments):
        before = self.tree(disk)
        done = self.run_zpkpack(*arguments, status=1)
        self.assertIn(b"No space left on device", done.stderr)
        self.assertIn(expected, done.stderr)
        self.assertEqual(done.stdout, b"")
        self.assertEqual(self.tree(disk), before)


class ExtractEndsTest(HalfWayTestCase):
    def test_a_signal_leaves_nothing(self):
        package = self.small_package("Out.app")
        self.expect_nothing_after_signals("extract", package, "-o", "Made")
        self.expect_all_after_signals("extract", package, "-o", "Second")
        self.assertEqual(self.tree(self.folder / "Second"), self.tree(self.folder / "Made"))

    @unittest.skipUnless(os.geteuid() == 0, "only root can make a small disk")
    def test_a_full_disk_leaves_nothing(self):
        write(self.source / "Data/noise", os.urandom(3_000_000))
        write(self.source / "UILang/Languages.xml", '<a FallBackCode="en"><Language Code="en"/></a>')
        shutil.copytree(ROOT / "Resources/UILang/en", self.source / "UILang/en")
        package = self.small_package("Out.run")
        for size, expected in ((1_000_000, b"Data"), (8192, b"")):
            with self.subTest(size), self.disk(f"size={size}") as disk:
                self.expect_nothing_on_full_disks(disk, expected, "extract", package, "-o", disk / "Made")


class TextsTestCase(HalfWayTestCase):
    """A source with the tables of two languages."""

    def setUp(self):
        super().setUp()
        for code in ("en", "de"):
            shutil.copytree(ROOT / "Resources/UILang" / code, self.source / "UILang" / code)
        write(self.source / "UILang/Languages.xml",
              '<a FallBackCode="en"><Language Code="en"/><Language Code="de"/></a>\n')


class ImportEndsTest(TextsTestCase):
    def setUp(self):
        super().setUp()
        self.run_zpkpack("strings", "source", "--export-po", "po")
        path = self.folder / "po/de.po"
        text = path.read_text()
        write(path, text.replace('msgid "OK"\nmsgstr "OK"', 'msgid "OK"\nmsgstr "Gut"'))
        self.assertNotEqual(path.read_text(), text)

    def test_a_signal_leaves_the_tables_as_they_were(self):
        table = self.source / "UILang/de/ZPKStringTable.def"
        old = table.read_text()
        self.expect_nothing_after_signals("strings", "source", "--import-po", "po")
        new = table.read_text()
        self.assertEqual(new, old.replace('"ZPKString_OK" = "OK"', '"ZPKString_OK" = "Gut"'))
        write(table, old)
        self.expect_all_after_signals("strings", "source", "--import-po", "po")
        self.assertEqual(table.read_text(), new)

    @unittest.skipUnless(os.geteuid() == 0, "only root can make a small disk")
    def test_a_full_disk_leaves_the_tables_as_they_were(self):
        with self.disk("size=100k") as disk:
            shutil.copytree(self.source, disk / "source")
            room = os.statvfs(disk)
            with open(disk / "filler", "wb") as file:
                file.write(bytes(max(0, room.f_bavail * room.f_frsize - 8192)))
            self.expect_nothing_on_full_disks(disk, b"", "strings", disk / "source", "--import-po", "po")


class NewEndsTest(HalfWayTestCase):
    def test_a_signal_leaves_nothing(self):
        self.expect_nothing_half_made("fchmod", self.folder / "Made", "new", "Made")
        self.assertEqual(self.run_zpkpack("check", "--strict", "Made").stdout, b"")

    @unittest.skipUnless(os.geteuid() == 0, "only root can make a small disk")
    def test_a_full_disk_leaves_nothing(self):
        for pages, name in enumerate(("Info/Startup.xml", "Data/setup", "Data/Greeting.txt"), 1):
            with self.subTest(name), self.disk(f"size={pages * PAGE}") as disk:
                self.expect_nothing_on_full_disks(disk, name.encode(), "new", disk / "Made")
        with self.disk("nr_inodes=4") as disk:
            self.expect_nothing_on_full_disks(disk, b"Data", "new", disk / "Made")


class ExportEndsTest(TextsTestCase):
    def test_a_signal_leaves_nothing(self):
        made = self.folder / "po"
        self.expect_nothing_half_made("fchmod", made, "strings", "source", "--export-po", "po")
        self.assertEqual(sorted(path.name for path in made.iterdir()), ["de.po", "en.po"])

    @unittest.skipUnless(os.geteuid() == 0, "only root can make a small disk")
    def test_a_full_disk_leaves_nothing(self):
        self.run_zpkpack("strings", "source", "--export-po", "po")
        first = -(-(self.folder / "po/de.po").stat().st_size // PAGE)
        for pages, name in ((1, b"de.po"), (first, b"en.po"), (first + 1, b"en.po")):
            with self.subTest(pages), self.disk(f"size={pages * PAGE}") as disk:
                self.expect_nothing_on_full_disks(disk, name, "strings", "source", "--export-po", disk / "po")


class ScrambleEndsTest(HalfWayTestCase):
    """Both ways."""

    def setUp(self):
        super().setUp()
        self.plain = os.urandom(3 * ROTATION)
        write(self.folder / "scramble.in", self.plain)
        write(self.folder / "unscramble.in", scrambled(self.plain))

    def test_a_signal_leaves_nothing(self):
        for command, expected in (("scramble", scrambled(self.plain)), ("unscramble", self.plain)):
            with self.subTest(command):
                made = self.folder / "made"
                self.expect_nothing_half_made("copy_file_range", made, command, f"{command}.in", "made")
                self.assertEqual(made.read_bytes(), expected)
                made.unlink()

    def test_a_signal_leaves_what_was_there(self):
        for command in ("scramble", "unscramble"):
            for number in (signal.SIGINT, signal.SIGTERM, signal.SIGKILL):
                with self.subTest(command, number=number):
                    made = write(self.folder / "made", "mine")
                    arguments = (command, f"{command}.in", "made", "--force")
                    with self.stopped("copy_file_range", *arguments) as (tracer, process):
                        os.kill(process, number)
                        tracer.communicate(timeout=60)
                        self.assertEqual(tracer.returncode, -number)
                    self.assertEqual(made.read_text(), "mine")
                    self.run_zpkpack(*arguments)
                    self.assertEqual(made.stat().st_size, len(self.plain))

    @unittest.skipUnless(os.geteuid() == 0, "only root can make a small disk")
    def test_a_full_disk_leaves_what_was_there(self):
        for command in ("scramble", "unscramble"):
            for size in (PAGE, len(self.plain) - PAGE):
                with self.subTest(command, size=size), self.disk(f"size={size}") as disk:
                    self.expect_nothing_on_full_disks(disk, b"", command, f"{command}.in", disk / "made")
                    write(disk / "mine", "mine")
                    self.expect_nothing_on_full_disks(disk, b"", command, f"{command}.in", disk / "mine", "--force")


class LookEndsTest(CommandTestCase):
    """A payload that takes long to read: zeros without end, which pack well."""

    PIECE = 64 << 20

    def setUp(self):
        super().setUp()
        self.hostile_bundle([])
        self.make_payload(128)

    def make_payload(self, pieces):
        size = pieces * self.PIECE - 1
        head, _, end = odc_archive([("Data", 0o040755, b""), ("Data/zeros", 0o100644, b"\0")]).rpartition(b"\0" + b"070707")
        head = head.replace(b"%011o" % 1 + b"Data/zeros", b"%011o" % size + b"Data/zeros")
        self.assertIn(b"%011o" % size, head)
        piece = gzip.compress(bytes(self.PIECE), 1, mtime=0)
        rest = gzip.compress(bytes(self.PIECE - 1) + b"070707" + end, 1, mtime=0)
        packed = gzip.compress(head, mtime=0) + piece * (pieces - 1) + rest
        write(self.folder / "Hostile.app/Contents/Resources/Data.datx", scrambled(packed))

    @contextlib.contextmanager
    def looking(self, *arguments, messages=None, stdout=subprocess.DEVNULL):
        terminal, child = messages or pty.openpty()
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 80, 0, 0))
        process = subprocess.Popen(
            [BUILD / "zpkpack", *arguments], cwd=self.folder, stdin=subprocess.DEVNULL, stdout=stdout,
            stderr=child, env={**os.environ, "TERM": "xterm", "TMPDIR": str(self.temporary)})
        os.close(child)
        if stdout != subprocess.DEVNULL:
            os.close(stdout)
        try:
            yield process, terminal
        finally:
            process.kill()
            process.wait()
            os.close(terminal)

    def read(self, terminal, is_enough):
        seen = b""
        end = time.monotonic() + 60
        while not is_enough(seen):
            ready, _, _ = select.select([terminal], [], [], max(0, end - time.monotonic()))
            self.assertTrue(ready, b"waited in vain after " + seen)
            try:
                piece = os.read(terminal, 65536)
            except OSError:  # The other end of a terminal is gone.
                break
            if not piece:
                break
            seen += piece
        return seen

    def test_an_interrupted_look_leaves_the_line_clean(self):
        for command in ("verify", "check", "list"):
            for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
                with self.subTest(command, number=number), self.looking(command, "Hostile.app") as (process, terminal):
                    seen = self.read(terminal, lambda text: b"] reading Data: " in text)
                    process.send_signal(number)
                    self.assertEqual(process.wait(60), -number)
                    seen += self.read(terminal, lambda text: False)
                    self.assertTrue(seen.endswith(WIPE), seen[-100:])
                    self.assertEqual(list(self.temporary.iterdir()), [])

    def test_a_signal_that_is_ignored_ends_no_look(self):
        """As with nohup."""
        self.addCleanup(signal.signal, signal.SIGHUP, signal.signal(signal.SIGHUP, signal.SIG_IGN))
        with self.looking("verify", "Hostile.app") as (process, terminal):
            self.read(terminal, lambda text: b"] reading Data: " in text)
            self.assertIsNone(process.poll())
            process.send_signal(signal.SIGHUP)
            seen = self.read(terminal, lambda text: False)
            # It is no whole package.
            self.assertEqual(process.wait(60), 1, seen)

    def test_a_list_on_the_same_terminal_has_no_bar(self):
        self.make_payload(12)
        terminal, child = pty.openpty()
        with self.looking("list", "Hostile.app", messages=(terminal, child), stdout=os.dup(child)) as (process, _):
            seen = self.read(terminal, lambda text: False)
            self.assertEqual(process.wait(60), 0)
        self.assertIn(b"Data/zeros\r\n", seen)
        self.assertNotIn(b"reading", seen)

    def test_a_log_has_a_line_a_second_at_most(self):
        for command in ("list", "check"):
            reader, writer = os.pipe()
            begin = time.monotonic()
            process = subprocess.Popen([BUILD / "zpkpack", command, "Hostile.app"], cwd=self.folder,
                                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=writer)
            os.close(writer)
            try:
                seen = self.read(reader, lambda text: text.count(b"\n") >= 2)
                self.assertLessEqual(seen.count(b"\n"), time.monotonic() - begin + 1)
                for line in seen.splitlines():
                    self.assertRegex(line, rb"^zpkpack: reading Data: \d+ % of [0-9.]+ MB, [0-9.]+ [kMG]B/s, [0-9:]+ left$")
            finally:
                process.kill()
                process.wait()
                os.close(reader)


if __name__ == "__main__":
    unittest.main(verbosity=2)
